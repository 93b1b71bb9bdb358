#include "audio/AudioEQ.h"

#include "core/Preferences.h"
#include "platform/SleepWatch.h"
#include "visualizers/VizConfig.h"

namespace MirlPlayer {

namespace {
const QString matchLoudnessKey = QStringLiteral("matchLoudness");
}

AudioEQ::AudioEQ(Preferences& prefs, VizConfig& vizConfig, Clock& clock, const EQTuning* tuning,
                 QObject* parent)
    : QObject(parent)
    , m_prefs(prefs)
    , m_vizConfig(vizConfig)
    , m_clock(clock)
    , m_tuning(tuning)
    , m_lastProcess(clock.now())
    , m_lastStereoTime(clock.now())
    , m_captureGeneration(QUuid::createUuid())
    , m_levelsOut([this](const LevelsFrame& f) { deliverLevels(f); })
    , m_stereoOut([this](const StereoFrame& f) { deliverStereo(f); })
    // The curve first: its readers sample it when the levels arrive.
    , m_wake(this,
             [this] {
                 m_stereoOut.take();
                 m_levelsOut.take();
             })
    , m_ensureTimer(
          clock, [this] { refresh(); }, this)
    , m_stopGrace(
          clock,
          [this] {
              m_wantCapture = false;
              refresh();
          },
          this)
    , m_wakeRefresh(
          clock, [this] { refresh(); }, this)
    , m_sampleQueue(QStringLiteral("notch.audio.capture"), QThread::HighestPriority) {
    // The switch is read on every block; the preferences live on the GUI thread, so the sample
    // side reads a copy that follows every change.
    m_matchLoudness = prefs.boolValue(matchLoudnessKey, true);
    m_sampleQueue.sync([this] {
        m_blocksIn =
            std::make_unique<ThreadWake>(m_sampleQueue.context(), [this] { drainBlocks(); });
    });
    connect(&prefs, &Preferences::changed, this, [this](const QString& key) {
        if (key == matchLoudnessKey)
            m_matchLoudness = m_prefs.boolValue(matchLoudnessKey, true);
    });
}

AudioEQ::~AudioEQ() {
    // The capture goes before the sample queue: after this no block is delivered.
    if (m_sleepWatch)
        m_sleepWatch->stopObserving();
    if (m_backend) {
        m_backend->teardown();
        m_backend->setBlockHandler(nullptr);
        m_backend->setEndedHandler(nullptr);
    }
    m_sampleQueue.sync([this] { m_blocksIn.reset(); });
}

const EQTuning& AudioEQ::tuning() const {
    return m_tuning ? *m_tuning : EQTuning::shared();
}

void AudioEQ::reportStatus(const QString& text, bool isError) {
    if (text == m_lastStatus)
        return;
    m_lastStatus = text;
    if (onStatus)
        onStatus(text, isError);
}

void AudioEQ::deliverLevels(const LevelsFrame& frame) {
    if (frame.generation != m_captureGeneration)
        return;
    if (frame.hasSignal) {
        m_lastSignalAt = m_clock.now();
        reportStatus(QStringLiteral("Receiving audio from ") + m_sourceLabel, false);
    }
    if (onActive)
        onActive(true);
    if (onLevels)
        onLevels(LevelArray(frame.levels.begin(), frame.levels.end()));
}

void AudioEQ::deliverStereo(const StereoFrame& frame) {
    if (frame.generation != m_captureGeneration)
        return;
    if (onStereo)
        onStereo(frame.curve);
}

} // namespace MirlPlayer
