#pragma once

#include <QObject>
#include <QString>

namespace MirlPlayer {

class Preferences;

// The audio page's model: whether the program may listen at all, and the last thing the capture
// said. `enabled` lives in the preferences under "audioCaptureEnabled"; `status` and
// `needsAttention` are fed by AudioEQ's status reports. GUI thread.
class AudioCaptureSettings : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled NOTIFY enabledChanged)
    Q_PROPERTY(QString status READ status NOTIFY statusChanged)
    Q_PROPERTY(bool needsAttention READ needsAttention NOTIFY needsAttentionChanged)
public:
    static inline const QString enabledKey = QStringLiteral("audioCaptureEnabled");
    // The in-process notification that asks the capture to forget a failure and try again.
    static inline const QString retryNotification =
        QStringLiteral("com.kestrova.mirlpro.retryAudio");
    static inline const QString idleStatus = QStringLiteral("Play a song to check audio capture.");

    explicit AudioCaptureSettings(Preferences& defaults, QObject* parent = nullptr);
    static AudioCaptureSettings& shared();

    bool enabled() const { return m_enabled; }
    void setEnabled(bool enabled);
    const QString& status() const { return m_status; }
    bool needsAttention() const { return m_needsAttention; }

    // The capture's status feed: each report carries its own error flag, so a report that is
    // not an error clears the attention.
    void setStatus(const QString& text, bool isError);

    // The status row of the audio page, given whether anything needs audio now.
    struct Row {
        QString text;
        QString symbol;
        QString button; // empty: no button
        bool operator==(const Row&) const = default;
    };
    Row row(bool needsAudio) const;
    Q_INVOKABLE QString rowText(bool needsAudio) const { return row(needsAudio).text; }
    Q_INVOKABLE QString rowSymbol(bool needsAudio) const { return row(needsAudio).symbol; }
    Q_INVOKABLE QString rowButton(bool needsAudio) const { return row(needsAudio).button; }

    // "Try Again" and "Check Connection": posts the retry notification.
    Q_INVOKABLE void postRetry();

Q_SIGNALS:
    void enabledChanged();
    void statusChanged();
    void needsAttentionChanged();
    // The retry notification; the player state answers it by retrying the capture.
    void retryAudio();

private:
    bool storedEnabled() const;

    Preferences& m_defaults;
    bool m_enabled;
    QString m_status = idleStatus;
    bool m_needsAttention = false;
};

} // namespace MirlPlayer
