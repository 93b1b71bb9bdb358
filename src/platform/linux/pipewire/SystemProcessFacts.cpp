#include "platform/linux/pipewire/SystemProcessFacts.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace MirlPlayer {

namespace {

// Small files only: a process's stat line, control groups, the Flatpak info.
QByteArray readSmall(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.read(64 * 1024);
}

// The "name" of the [Application] group of a Flatpak info file.
QString flatpakAppID(const QByteArray& info) {
    bool inApplication = false;
    for (const QByteArray& raw : info.split('\n')) {
        const QByteArray line = raw.trimmed();
        if (line.startsWith('[')) {
            inApplication = line == "[Application]";
            continue;
        }
        if (inApplication && line.startsWith("name=")) {
            return QString::fromUtf8(line.mid(5)).trimmed();
        }
    }
    return {};
}

// A Flatpak application's scope is "app-flatpak-<app id>-<number>.scope"; a Snap's is
// "snap.<name>.<app>…".
QString cgroupAppID(const QByteArray& cgroups) {
    static const QRegularExpression flatpak(QStringLiteral("/app-flatpak-([^/]+)-[0-9]+\\.scope"));
    static const QRegularExpression snap(QStringLiteral("/snap\\.([^./]+)\\.[^/]+"));
    const QString text = QString::fromUtf8(cgroups);
    if (const auto m = flatpak.match(text); m.hasMatch())
        return m.captured(1);
    if (const auto m = snap.match(text); m.hasMatch())
        return m.captured(1);
    return {};
}

} // namespace

SystemProcessFacts::SystemProcessFacts(QString procRoot)
    : m_root(std::move(procRoot)) {}

QString SystemProcessFacts::path(qint64 pid, const char* entry) const {
    return m_root + u'/' + QString::number(pid) + u'/' + QLatin1String(entry);
}

qint64 SystemProcessFacts::parentOf(qint64 pid) const {
    if (pid <= 0)
        return 0;
    // "pid (comm) state ppid …": the command name may hold spaces and parentheses, so the fields
    // are counted from the last closing parenthesis.
    const QByteArray stat = readSmall(path(pid, "stat"));
    const int close = stat.lastIndexOf(')');
    if (close < 0)
        return 0;
    const QList<QByteArray> fields = stat.mid(close + 1).simplified().split(' ');
    if (fields.size() < 2)
        return 0;
    bool ok = false;
    const qint64 parent = fields.at(1).toLongLong(&ok);
    return ok && parent > 0 ? parent : 0;
}

QString SystemProcessFacts::sandboxAppID(qint64 pid) const {
    if (pid <= 0)
        return {};
    const QString id = flatpakAppID(readSmall(path(pid, "root/.flatpak-info")));
    return id.isEmpty() ? cgroupAppID(readSmall(path(pid, "cgroup"))) : id;
}

QString SystemProcessFacts::binaryName(qint64 pid) const {
    if (pid <= 0)
        return {};
    QString target = QFileInfo(path(pid, "exe")).symLinkTarget();
    if (!target.isEmpty()) {
        if (target.endsWith(u" (deleted)")) // the program was updated while it runs
            target.chop(10);
        return QFileInfo(target).fileName();
    }
    return QString::fromUtf8(readSmall(path(pid, "comm"))).trimmed();
}

} // namespace MirlPlayer
