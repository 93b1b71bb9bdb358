#pragma once

#include "audio/AudioFormat.h"
#include "audio/BlockRing.h"
#include "audio/CaptureTimer.h"
#include "audio/EQTuning.h"
#include "audio/LoudnessMatcher.h"
#include "audio/MainThreadHandoff.h"
#include "audio/RollingFrame.h"
#include "audio/Spectrum.h"
#include "core/Clock.h"
#include "core/SerialQueue.h"
#include "platform/CaptureBackend.h"
#include "playback/Snapshot.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QUuid>
#include <array>
#include <atomic>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace MirlPlayer {

class Preferences;
class SleepWatch;
class VizConfig;

// 128 band levels in 0...1, index 0 the lowest band (40 Hz at 48 kHz), the highest 16 kHz.
using LevelArray = QList<double>;
// 96 columns in 0...1, column 0 hard left, column 95 hard right.
using StereoCurve = std::array<float, 96>;

// The audio engine: it listens to the player's own output and reduces it to band levels and a
// stereo curve for the visualizers.
//
// Two halves share the class. The sample side (this header's "sample queue" section, code in
// AudioEQAnalysis.cpp) runs on `sampleQueue` and owns all analysis state, so it needs no lock;
// the only cross-thread reads are VizConfig's mirror and the loudness switch. Results cross to the
// GUI thread by value, tagged with `captureGeneration`; a result of an older generation is
// dropped there, so a frame in flight during a capture reset never reaches a view. The capture
// side (tap supervision and teardown) runs on the GUI thread and talks to the sample side only
// through a synchronous call on `sampleQueue` for the capture reset and the tap format.
class AudioEQ : public QObject {
    Q_OBJECT
public:
    static constexpr int bandCount = 128;
    static constexpr int fftSize = 2048;
    static constexpr int stereoCols = 96;
    static constexpr double emitInterval = 1.0 / 30.0;
    static constexpr double stereoInterval = 1.0 / 45.0;

    // `tuning` null means the hand-tuning file, read at the first use.
    explicit AudioEQ(Preferences& prefs, VizConfig& vizConfig, Clock& clock = Clock::system(),
                     const EQTuning* tuning = nullptr, QObject* parent = nullptr);
    ~AudioEQ() override;

    // Callbacks towards the program, each optional, all called on the GUI thread.
    std::function<void(const LevelArray&)> onLevels;
    // Called with true just before every onLevels.
    std::function<void(bool)> onActive;
    std::function<void(const StereoCurve&)> onStereo;
    std::function<void(const QString& text, bool isError)> onStatus;

    SerialQueue& sampleQueue() { return m_sampleQueue; }
    const EQTuning& tuning() const;
    // Whether anything on screen reads the stereo curve; without a reader its two transforms
    // are not run. Any thread.
    void setStereoWanted(bool wanted) { m_stereoWanted.store(wanted, std::memory_order_relaxed); }

    // ---- GUI thread -------------------------------------------------------------------------

    // The one choke point for status texts: a repeat of the last text is not reported again.
    void reportStatus(const QString& text, bool isError);
    const QString& lastStatus() const { return m_lastStatus; }
    const QString& sourceLabel() const { return m_sourceLabel; }
    // Last delivery that carried signal; the capture watchdog reads it.
    double lastSignalAt() const { return m_lastSignalAt; }
    // Written only by captureReset(), which runs while the GUI thread waits for it.
    QUuid captureGeneration() const { return m_captureGeneration; }

    // ---- capture supervision (GUI thread; code in AudioEQCapture.cpp) ------------------------

    // How the player of a source is found: its pid while it runs, and its name for messages
    // ("Spotify", the player's own name, or "your music player"). Either may be unset.
    struct PlayerLookup {
        std::function<std::optional<qint64>(Source)> pid;
        std::function<QString(Source)> displayName;
    };
    static constexpr double supervisorInterval = 2.0;
    static constexpr double stopGraceInterval = 1.5;
    static constexpr double wakeDelay = 0.5;
    static constexpr double watchdogInterval = 6.0;
    // A capture that ends sooner than this after its start while its output is still there was
    // refused: it counts as a failure of that pid instead of being rebuilt at once.
    static constexpr double quickEndInterval = 1.0;

    // Set before start(); none is owned. Without a backend no capture ever starts.
    void setCaptureBackend(CaptureBackend* backend);
    void setPlayerLookup(PlayerLookup lookup) { m_playerLookup = std::move(lookup); }
    void setSleepWatch(SleepWatch* watch) { m_sleepWatch = watch; }

    // Once, after the callbacks are set: observes wake from sleep and supervises the capture.
    void start();
    // At exit: nothing wanted, no timers, no wake observer, capture torn down.
    void stop();
    // The player to listen to by its source name ("Spotify", "Music"); a change tears down.
    void setSource(const QString& name);
    // The outside wish. Not wanting without `stopNow` waits out a grace before stopping, so a
    // brief lapse of the wish does not rebuild the capture.
    void setCapture(bool want, bool stopNow);
    // "Try Again": the failure is forgotten and the capture rebuilt.
    void retry();
    // After a wake from sleep: rebuilt shortly after.
    void handleWake();
    // The supervisor: brings the capture in line with the wish and the player.
    void refresh();
    // Runs the capture timers that are due by the clock (their own QTimers call it too).
    void pollTimers();

    Source source() const { return m_source; }
    qint64 tappedPID() const { return m_tappedPID; }
    std::optional<qint64> failedPID() const { return m_failedPID; }
    bool wantCapture() const { return m_wantCapture; }
    double startedAt() const { return m_startedAt; }
    bool isSupervising() const { return m_ensureTimer.isActive(); }
    bool isStopGraceArmed() const { return m_stopGrace.isActive(); }

    // ---- sample queue -----------------------------------------------------------------------
    // Everything below runs on `sampleQueue` (or on any one thread while the queue is idle).

    void setTapFormat(const std::optional<TapFormat>& format) { m_tapASBD = format; }
    const std::optional<TapFormat>& tapFormat() const { return m_tapASBD; }

    // One delivered block in the current tap format. Malformed blocks are dropped silently.
    void processBlock(std::span<const AudioBuffer> buffers);
    // One block of `frames` frames in `format`, which becomes the tap format. Interleaved data
    // holds frames x channels samples; non-interleaved data holds the channel planes one after
    // the other, `frames` samples each (only the first two are read).
    void processBlock(const float* samples, std::size_t frames, const TapFormat& format);

    // The rolling mono buffer and the frame clock.
    void processMono(const float* samples, std::size_t count);
    // The stereo field of the latest 2048 frames, at most 45 times a second.
    void processStereo(const float* left, const float* right, std::size_t count);
    // A new capture epoch: fresh generation, loudness, buffers and followers cleared. The
    // emission and frame clocks survive.
    void captureReset();

    // Magnitudes (`bins` of them, bin 0 unused) to `bands` unsmoothed targets on a log scale.
    static std::vector<float> bandLevels(const float* magnitudes, int bins, int bands,
                                         double sampleRate, const EQTuning& tuning);

    const Spectrum& analyzer() const { return m_analyzer; }
    const Spectrum& stereoL() const { return m_stereoL; }
    const Spectrum& stereoR() const { return m_stereoR; }

private:
    // The band edges of one sample rate, computed when the rate changes.
    struct BandMap {
        double sampleRate = 0;
        int bins = 0;
        std::vector<int> b0;
        std::vector<int> b1;
        std::vector<float> tiltDb;
        static BandMap build(int bins, int bands, double sampleRate, double tilt);
        // From the squared magnitudes of the bins to the unsmoothed band targets.
        void apply(const float* powers, const EQTuning& tuning, float* dbScratch, float* out) const;
    };
    struct LevelsFrame {
        QUuid generation;
        bool hasSignal = false;
        std::array<double, bandCount> levels{};
    };
    struct StereoFrame {
        QUuid generation;
        StereoCurve curve{};
    };

    // One block of loudness-matched samples into the rings, and the analyses it makes due.
    template <std::size_t stride>
    void feed(const float* left, const float* right, std::size_t frames, float gain);
    void monoFrameReady();
    void stereoFrameReady();
    // Wakes the GUI thread once for whatever the block published.
    void wakeIfDue();
    void analyze(double dt);
    void analyzeStereo(double now);
    // The tap's rate, or 48 kHz without a tap format (or with a rate that means nothing).
    double sampleRate() const {
        return m_tapASBD && m_tapASBD->sampleRate > 0 && m_tapASBD->sampleRate < 1e7
                   ? m_tapASBD->sampleRate
                   : 48000.0;
    }
    void deliverLevels(const LevelsFrame& frame);
    void deliverStereo(const StereoFrame& frame);

    // Sample queue: analyses the blocks the capture gathered.
    void drainBlocks();

    // Capture side (AudioEQCapture.cpp).
    void startTap(qint64 pid);
    void fail(qint64 pid, const QString& what, int code);
    void teardown();
    void captureEnded(quint64 captureID);
    void updateSupervisor();
    QString labelFor(Source source) const;
    static void debugLine(const QString& message);

    Preferences& m_prefs;
    VizConfig& m_vizConfig;
    Clock& m_clock;
    const EQTuning* m_tuning;

    // Sample side.
    std::optional<TapFormat> m_tapASBD;
    LoudnessMatcher m_loudness;
    std::atomic<bool> m_matchLoudness{true};
    std::atomic<bool> m_stereoWanted{true};
    Spectrum m_analyzer{fftSize};
    Spectrum m_stereoL{fftSize};
    Spectrum m_stereoR{fftSize};
    RollingFrame<fftSize> m_buf;
    RollingFrame<fftSize> m_bufL;
    RollingFrame<fftSize> m_bufR;
    std::vector<float> m_left;
    std::vector<float> m_right;
    std::array<float, fftSize / 2> m_powers{};
    std::array<float, fftSize / 2> m_magL{};
    std::array<float, fftSize / 2> m_magR{};
    std::array<float, bandCount> m_dbScratch{};
    std::array<float, bandCount> m_target{};
    std::array<float, bandCount> m_shaped{};
    std::array<float, bandCount> m_prevTarget{};
    bool m_hasPrevTarget = false;
    std::array<float, bandCount> m_smoothed{};
    std::array<double, bandCount> m_levels{};
    std::array<float, stereoCols> m_smoothedStereo{};
    std::array<float, fftSize / 2> m_stereoSum{};
    std::array<int, fftSize / 2> m_stereoColumn{};
    BandMap m_bandMap;
    double m_lastProcess;
    double m_lastEmit = Clock::distantPast;
    double m_lastStereoAt = Clock::distantPast;
    double m_lastStereoTime;
    int m_debugFrames = 0;
    int m_stereoDebugFrames = 0;

    // Shared: written only by captureReset().
    QUuid m_captureGeneration;

    // GUI side.
    QString m_sourceLabel = QStringLiteral("Spotify");
    QString m_lastStatus;
    double m_lastSignalAt = Clock::distantPast;
    MainThreadHandoff<LevelsFrame> m_levelsOut;
    MainThreadHandoff<StereoFrame> m_stereoOut;
    // One wake-up per block that published anything, whichever of the two it made.
    ThreadWake m_wake;
    bool m_wakeDue = false; // sample queue: something was published in this block

    // Capture supervision, GUI side.
    CaptureBackend* m_backend = nullptr;
    PlayerLookup m_playerLookup;
    SleepWatch* m_sleepWatch = nullptr;
    bool m_started = false;
    quint64 m_captureID = 0;      // the backend's name of the running capture, 0 = none
    quint64 m_capturedObject = 0; // the audio object it captures
    qint64 m_tappedPID = -1;
    CaptureTimer m_ensureTimer;
    Source m_source = Source::spotify;
    std::optional<qint64> m_failedPID;
    double m_startedAt = Clock::distantPast;
    bool m_wantCapture = false;
    CaptureTimer m_stopGrace;
    CaptureTimer m_wakeRefresh;

    // Last, so that it stops first: no block runs while the members above are destroyed.
    SerialQueue m_sampleQueue;
    // Blocks from the capture's real-time thread; they wake the sample queue once enough of them
    // arrived. The wake lives on the sample queue and is made and destroyed there.
    BlockRing m_blocks;
    std::unique_ptr<ThreadWake> m_blocksIn;
};

} // namespace MirlPlayer
