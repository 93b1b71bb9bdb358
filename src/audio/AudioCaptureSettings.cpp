#include "audio/AudioCaptureSettings.h"

#include "core/Preferences.h"

namespace MirlPlayer {

namespace {
const QString showVisualizerKey = QStringLiteral("showVisualizer");
}

AudioCaptureSettings::AudioCaptureSettings(Preferences& defaults, QObject* parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_enabled(storedEnabled()) {
    // Another writer of the key (the setup assistant) is followed.
    connect(&m_defaults, &Preferences::changed, this, [this](const QString& key) {
        if (key == enabledKey && m_defaults.contains(enabledKey)) {
            const bool stored = m_defaults.boolValue(enabledKey, m_enabled);
            if (stored != m_enabled) {
                m_enabled = stored;
                Q_EMIT enabledChanged();
            }
        }
    });
}

AudioCaptureSettings& AudioCaptureSettings::shared() {
    static AudioCaptureSettings* instance = new AudioCaptureSettings(Preferences::shared());
    return *instance;
}

// Without a stored choice, someone who has used the visualizer before keeps hearing it, while a
// fresh install stays off until the user or the setup assistant turns it on.
bool AudioCaptureSettings::storedEnabled() const {
    if (m_defaults.contains(enabledKey))
        return m_defaults.boolValue(enabledKey, m_defaults.contains(showVisualizerKey));
    return m_defaults.contains(showVisualizerKey);
}

void AudioCaptureSettings::setEnabled(bool enabled) {
    const bool changed = enabled != m_enabled;
    m_enabled = enabled;
    // Written at once, also when it only confirms the first-start value.
    if (!m_defaults.contains(enabledKey) || m_defaults.boolValue(enabledKey, !enabled) != enabled)
        m_defaults.setValue(enabledKey, enabled);
    if (changed)
        Q_EMIT enabledChanged();
}

void AudioCaptureSettings::setStatus(const QString& text, bool isError) {
    if (text != m_status) {
        m_status = text;
        Q_EMIT statusChanged();
    }
    if (isError != m_needsAttention) {
        m_needsAttention = isError;
        Q_EMIT needsAttentionChanged();
    }
}

AudioCaptureSettings::Row AudioCaptureSettings::row(bool needsAudio) const {
    const QString waveform = QStringLiteral("waveform");
    if (!m_enabled)
        return {QStringLiteral("Music access is off"), waveform, {}};
    if (!needsAudio)
        return {QStringLiteral("Visualizer is off, music access is idle"), waveform,
                QStringLiteral("Turn On Visualizer")};
    if (m_needsAttention)
        return {m_status, QStringLiteral("exclamationmark.circle"), QStringLiteral("Try Again")};
    return {m_status, waveform, {}};
}

void AudioCaptureSettings::postRetry() {
    Q_EMIT retryAudio();
}

} // namespace MirlPlayer
