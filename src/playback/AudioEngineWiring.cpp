#include "playback/AudioEngineWiring.h"

#include "audio/AudioCaptureSettings.h"
#include "audio/AudioEQ.h"
#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "look/Theme.h"
#include "playback/PlayerState.h"

#include <QPointer>

namespace MirlPlayer {

AudioEngineWiring::AudioEngineWiring(PlayerState& state, Theme& theme,
                                     AudioCaptureSettings& settings, AudioEQ& engine, Clock& clock,
                                     QObject* parent)
    : QObject(parent)
    , m_state(state)
    , m_theme(theme)
    , m_settings(settings)
    , m_engine(engine)
    , m_clock(clock)
    , m_debounce(
          debounceInterval, [this] { sink(); }, clock, this) {}

AudioEngineWiring::~AudioEngineWiring() {
    if (m_started)
        m_state.stereoStore()->onReadersChanged = nullptr;
}

void AudioEngineWiring::start() {
    if (m_started)
        return;
    m_started = true;

    // The engine calls these on the GUI thread.
    m_engine.onLevels = [this](const QList<double>& levels) { m_state.noteLevels(levels); };
    m_engine.onStereo = [this](const std::array<float, 96>& curve) {
        m_state.stereoStore()->update(curve);
    };
    // The stereo analysis runs only while a view on screen reads the curve.
    StereoStore* stereo = m_state.stereoStore();
    stereo->onReadersChanged = [this](bool any) { m_engine.setStereoWanted(any); };
    m_engine.setStereoWanted(stereo->hasReaders());
    m_engine.onStatus = [this](const QString& text, bool isError) {
        m_settings.setStatus(text, isError);
    };
    m_engine.start();

    connect(&m_theme, &Theme::needsAudioChanged, this, &AudioEngineWiring::inputsChanged);
    connect(&m_state, &PlayerState::isPlayingChanged, this, &AudioEngineWiring::inputsChanged);
    connect(&m_state, &PlayerState::sourceNameChanged, this, &AudioEngineWiring::inputsChanged);
    connect(&m_settings, &AudioCaptureSettings::enabledChanged, this,
            &AudioEngineWiring::inputsChanged);
    connect(&m_settings, &AudioCaptureSettings::retryAudio, &m_engine, &AudioEQ::retry);
    // The first combination goes through like any other.
    inputsChanged();
}

void AudioEngineWiring::inputsChanged() {
    const Inputs inputs{m_theme.needsAudio(), m_state.isPlaying(), m_settings.enabled(),
                        m_state.sourceName()};
    // The idle fade follows at once; only the capture waits for the inputs to settle.
    m_state.setNeedsAudio(inputs.needsAudio);
    if (m_hasLatest && inputs == m_latest)
        return;
    m_hasLatest = true;
    m_latest = inputs;
    m_debounce.trigger();
}

void AudioEngineWiring::sink() {
    const Inputs& in = m_latest;
    m_engine.setSource(in.sourceName);
    m_engine.setCapture(in.needsAudio && in.isPlaying && in.enabled, !(in.isPlaying && in.enabled));
}

} // namespace MirlPlayer
