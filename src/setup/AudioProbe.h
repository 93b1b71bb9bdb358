#pragma once

#include "core/SerialQueue.h"
#include "platform/CaptureBackend.h"

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace MirlPlayer {

// Proves that MIRL PRO can hear the player: a real capture of the player's own output through
// the same backend as the visualizer (never a microphone, never the whole mix), with a meter
// that rises at once and falls by 18 % per 0.05 s tick. `heard` latches at the first tick whose
// peak is above 0.002, so only sound that really arrived sets it. GUI thread.
class AudioProbe : public QObject {
    Q_OBJECT
    Q_PROPERTY(float level READ level NOTIFY levelChanged)
    Q_PROPERTY(bool heard READ heard NOTIFY heardChanged)
    Q_PROPERTY(bool running READ running NOTIFY runningChanged)
    Q_PROPERTY(bool failed READ failed NOTIFY failedChanged)
public:
    // The process of the player to listen to among the candidates (bus names, the preferred
    // first); called on the probe's own queue, may block.
    using PlayerProcess = std::function<std::optional<qint64>(const QStringList& candidates)>;

    AudioProbe(std::unique_ptr<CaptureBackend> backend, PlayerProcess player,
               QObject* parent = nullptr);
    ~AudioProbe() override;

    float level() const { return m_level; }
    bool heard() const { return m_heard; }
    bool running() const { return m_running; }
    bool failed() const { return m_failed; }

    // The players to listen to, the preferred first; a change is followed within a second.
    void setCandidates(const QStringList& ids) { m_candidates = ids; }

    Q_INVOKABLE void start();
    // Undoes everything start() made; `heard` and `failed` stay as they are.
    Q_INVOKABLE void stop();
    // One step of the meter: takes the peak since the last tick.
    void meterTick();

    // The largest magnitude of the samples, read in groups of four: a remainder of fewer than
    // four at the end is skipped, and so is a block of fewer than four.
    static float blockPeak(const float* samples, std::size_t count);

    // How often the player's output is looked for while none is captured or the player may
    // have changed.
    static constexpr int lookIntervalMs = 1000;
    static constexpr int meterIntervalMs = 50;

Q_SIGNALS:
    void levelChanged();
    void heardChanged();
    void runningChanged();
    void failedChanged();

private:
    // Lookups run on a queue that lives as long as the process, so a closing window never
    // waits for a player.
    static SerialQueue& queue();
    void look();
    void capture(std::optional<qint64> pid);
    void fail();
    void setRunning(bool running);
    void setFailed(bool failed);
    void setLevel(float level);

    std::unique_ptr<CaptureBackend> m_backend;
    PlayerProcess m_player;
    QStringList m_candidates;
    QTimer m_meterTimer;
    QTimer m_lookTimer;
    std::atomic<float> m_peak{0}; // raised by the capture thread, taken by the meter tick
    float m_level = 0;
    bool m_heard = false;
    bool m_running = false;
    bool m_failed = false;
    bool m_looking = false; // a lookup is under way on the queue
    quint64 m_object = 0;   // the captured output, 0 while none is
    quint64 m_captureID = 0;
    int m_generation = 0; // renewed by stop(): an older lookup touches nothing
};

} // namespace MirlPlayer
