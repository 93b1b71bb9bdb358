#pragma once

#include "core/Clock.h"
#include "core/Debouncer.h"

#include <QObject>
#include <QString>

namespace MirlPlayer {

class AudioCaptureSettings;
class AudioEQ;
class PlayerState;
class Theme;

// The audio engine's place in the now-playing model. It feeds the engine's levels, stereo
// curve and status into their stores, and tells the engine what to listen to: the latest of
// four inputs (whether anything on screen needs audio, whether the player plays, the user's
// consent, the source's name), with repeats dropped and a 100 ms debounce, so that a track
// change, where playing and source move within one turn of the event loop, neither starts nor
// stops the capture. Pausing or withdrawing consent stops at once; merely needing no audio waits
// for the engine's grace.
//
// Made by PlayerState's start (through its audio engine starter); every referenced object must
// outlive it. GUI thread.
class AudioEngineWiring : public QObject {
    Q_OBJECT
public:
    static constexpr double debounceInterval = 0.1;

    struct Inputs {
        bool needsAudio = false;
        bool isPlaying = false;
        bool enabled = false;
        QString sourceName;
        bool operator==(const Inputs&) const = default;
    };

    AudioEngineWiring(PlayerState& state, Theme& theme, AudioCaptureSettings& settings,
                      AudioEQ& engine, Clock& clock = Clock::system(), QObject* parent = nullptr);
    ~AudioEngineWiring() override;

    // Sets the engine's callbacks, starts it and begins following the inputs. Once.
    void start();

    // The inputs the sink last acted on, or will act on when the debounce ends.
    const Inputs& latest() const { return m_latest; }
    bool sinkPending() const { return m_debounce.pending(); }
    // Runs the sink if the debounce is over (its own timer calls it too). For tests.
    bool pollSink() { return m_debounce.poll(); }

private:
    void inputsChanged();
    void sink();

    PlayerState& m_state;
    Theme& m_theme;
    AudioCaptureSettings& m_settings;
    AudioEQ& m_engine;
    Clock& m_clock;
    Debouncer m_debounce;
    Inputs m_latest;
    bool m_hasLatest = false;
    bool m_started = false;
};

} // namespace MirlPlayer
