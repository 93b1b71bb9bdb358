#pragma once

#include <QObject>
#include <memory>

namespace MirlPlayer {

class AudioEQ;
class AudioEngineWiring;
class LogindSleepWatch;
class PipeWireCapture;
class PlayerBridge;
class PlayerState;
class Preferences;

// Owns the audio engine's parts in the running program: the PipeWire capture, logind's wake
// signal, the engine, and the wiring into the now-playing model.
// PlayerState's start runs startFor(); the quit path runs stop(), so that no capture outlives
// the process. GUI thread.
class AudioEngineHost : public QObject {
    Q_OBJECT
public:
    explicit AudioEngineHost(PlayerBridge& bridge, QObject* parent = nullptr);
    ~AudioEngineHost() override;

    void startFor(PlayerState& state);
    void stop();

    AudioEQ& engine() { return *m_engine; }

private:
    PlayerBridge& m_bridge;
    std::unique_ptr<PipeWireCapture> m_capture;
    std::unique_ptr<LogindSleepWatch> m_sleepWatch;
    std::unique_ptr<AudioEQ> m_engine; // after the capture: it tears the capture down first
    std::unique_ptr<AudioEngineWiring> m_wiring;
};

} // namespace MirlPlayer
