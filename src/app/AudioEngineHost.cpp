#include "app/AudioEngineHost.h"

#include "audio/AudioCaptureSettings.h"
#include "audio/AudioEQ.h"
#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "platform/PlayerBridge.h"
#include "platform/linux/logind/LogindSleepWatch.h"
#include "platform/linux/pipewire/PipeWireCapture.h"
#include "playback/AudioEngineWiring.h"
#include "visualizers/VizConfig.h"

namespace MirlPlayer {

AudioEngineHost::AudioEngineHost(PlayerBridge& bridge, QObject* parent)
    : QObject(parent)
    , m_bridge(bridge)
    , m_capture(std::make_unique<PipeWireCapture>())
    , m_sleepWatch(std::make_unique<LogindSleepWatch>())
    , m_engine(std::make_unique<AudioEQ>(Preferences::shared(), VizConfig::shared())) {
    m_engine->setCaptureBackend(m_capture.get());
    m_engine->setSleepWatch(m_sleepWatch.get());
    PlayerBridge* players = &m_bridge;
    m_engine->setPlayerLookup({[players](Source source) { return players->pid(source); },
                               [players](Source source) { return players->displayName(source); }});
}

AudioEngineHost::~AudioEngineHost() {
    m_wiring.reset();
    m_engine.reset(); // tears the capture down while it still exists
}

void AudioEngineHost::startFor(PlayerState& state) {
    if (m_wiring)
        return;
    m_wiring = std::make_unique<AudioEngineWiring>(state, Theme::shared(),
                                                   AudioCaptureSettings::shared(), *m_engine);
    m_wiring->start();
}

void AudioEngineHost::stop() {
    m_engine->stop();
}

} // namespace MirlPlayer
