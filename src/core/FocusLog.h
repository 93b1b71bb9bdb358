#pragma once

#include "core/Clock.h"
#include "core/SerialQueue.h"

#include <QDateTime>
#include <QString>
#include <functional>

namespace MirlPlayer {

// The one always-on diagnostic: a plain text file that answers "why did Spotify come to the
// front?". Each line is a time stamp, a blank and the text. Commands sent to players are
// remembered, so that each Spotify activation can say what the program last did to it and how
// long ago. Written on its own serial queue "mirl.focuslog"; any failure is ignored, since a
// diagnostic must never disturb playback. The file is dropped whole once it reaches 200001 bytes.
class FocusLog {
public:
    static constexpr qint64 sizeLimit = 200001;

    explicit FocusLog(const QString& path, Clock& clock = Clock::system());
    ~FocusLog();

    // $XDG_STATE_HOME/MIRL PRO/spotify-focus.log
    static FocusLog& shared();
    static QString defaultPath();
    // The time of day with fractional seconds and the zone, such as "14:03:07.125+01:00".
    static QString timeStamp(const QDateTime& time);

    QString path() const { return m_path; }

    void logLine(const QString& text);
    void logCommand(const QString& text);

    // Writes "MIRL PRO started" once and starts watching activations through the installer
    // (which connects the desktop's activation events to noteActivation).
    void installFocusWatch();
    void setWatchInstaller(std::function<void()> installer) {
        m_watchInstaller = std::move(installer);
    }
    bool watching() const { return m_watching; }

    // An application was activated ("ACTIVATED") or unhidden ("UNHIDDEN"). Only Spotify's
    // activations are written.
    void noteActivation(const QString& tag, const QString& applicationID,
                        const QString& frontmostID);
    static bool isSpotify(const QString& applicationID);

    // Waits until every queued line is written.
    void flush();

private:
    void append(const QString& line); // log queue

    QString m_path;
    Clock& m_clock;
    SerialQueue m_queue{QStringLiteral("mirl.focuslog"), QThread::LowPriority};
    // Confined to the log queue.
    QString m_lastCommandText = QStringLiteral("none");
    double m_lastCommandAt = Clock::distantPast;
    // GUI thread.
    bool m_watching = false;
    std::function<void()> m_watchInstaller;
};

} // namespace MirlPlayer
