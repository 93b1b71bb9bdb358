#include "core/FocusLog.h"

#include "core/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace MirlPlayer {

FocusLog::FocusLog(const QString& path, Clock& clock)
    : m_path(path)
    , m_clock(clock) {
    // It names devices and songs of the user: a folder of the user's alone. Failure is ignored.
    ensurePrivateDir(QFileInfo(path).absolutePath());
}

FocusLog::~FocusLog() {
    flush();
}

FocusLog& FocusLog::shared() {
    static FocusLog* log = new FocusLog(defaultPath());
    return *log;
}

QString FocusLog::defaultPath() {
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty())
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/MIRL PRO/spotify-focus.log");
}

QString FocusLog::timeStamp(const QDateTime& time) {
    const QDateTime local = time.toLocalTime();
    QString stamp = local.time().toString(QStringLiteral("HH:mm:ss.zzz"));
    const int offset = local.offsetFromUtc();
    if (offset == 0)
        return stamp + u'Z';
    const int minutes = std::abs(offset) / 60;
    stamp += offset < 0 ? u'-' : u'+';
    stamp += QStringLiteral("%1:%2")
                 .arg(minutes / 60, 2, 10, QLatin1Char('0'))
                 .arg(minutes % 60, 2, 10, QLatin1Char('0'));
    return stamp;
}

void FocusLog::logLine(const QString& text) {
    // Stamped by the caller, so lines from different threads may be slightly out of order.
    const QString line = timeStamp(QDateTime::currentDateTime()) + u' ' + text + u'\n';
    m_queue.async([this, line] { append(line); });
}

void FocusLog::logCommand(const QString& text) {
    m_queue.async([this, text] {
        m_lastCommandText = text;
        m_lastCommandAt = m_clock.wallNow();
        append(timeStamp(QDateTime::currentDateTime()) + QStringLiteral(" command: ") + text +
               u'\n');
    });
}

void FocusLog::installFocusWatch() {
    if (m_watching)
        return;
    m_watching = true;
    logLine(QStringLiteral("MIRL PRO started"));
    if (m_watchInstaller)
        m_watchInstaller();
}

bool FocusLog::isSpotify(const QString& applicationID) {
    // macOS names applications by bundle identifier; X11 by window class.
    return applicationID == u"com.spotify.client" ||
           applicationID.compare(u"spotify", Qt::CaseInsensitive) == 0;
}

void FocusLog::noteActivation(const QString& tag, const QString& applicationID,
                              const QString& frontmostID) {
    if (!isSpotify(applicationID))
        return;
    const QString stamp = timeStamp(QDateTime::currentDateTime());
    const QString front = frontmostID.isEmpty() ? QStringLiteral("?") : frontmostID;
    m_queue.async([this, tag, front, stamp] {
        const double ago = m_clock.wallNow() - m_lastCommandAt;
        const QString text = QStringLiteral("Spotify %1 — last MIRL PRO command %2 s ago: %3 "
                                            "(front now: %4)")
                                 .arg(tag, QString::number(ago, 'f', 1), m_lastCommandText, front);
        append(stamp + u' ' + text + u'\n');
    });
}

void FocusLog::flush() {
    if (!m_queue.isCurrent())
        m_queue.sync([] {});
}

void FocusLog::append(const QString& line) {
    // History is dropped whole, not rotated: checked before the write, the file stays just
    // above 200000 bytes at worst.
    const QFileInfo info(m_path);
    if (info.exists() && info.size() >= sizeLimit)
        QFile::remove(m_path);
    QFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    file.write(line.toUtf8());
}

} // namespace MirlPlayer
