#include "setup/MusicAutomation.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QtGlobal>
#include <cmath>

namespace MirlPlayer::MusicAutomation {

namespace {

const QString mprisPrefix = QStringLiteral("org.mpris.MediaPlayer2.");

QStringList splitPath(const QByteArray& value) {
    return QString::fromLocal8Bit(value).split(u':', Qt::SkipEmptyParts);
}

// An executable file in one of the folders, for each of the names.
QString findExecutable(const QStringList& names, const QStringList& dirs) {
    for (const QString& name : names) {
        if (name.isEmpty())
            continue;
        const QString found = QStandardPaths::findExecutable(name, dirs);
        if (!found.isEmpty())
            return found;
    }
    return {};
}

// MPRIS's PlaybackStatus of a player: the one call both the probe and the choice make.
QDBusMessage playbackStatusCall(const QString& id) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        id, QStringLiteral("/org/mpris/MediaPlayer2"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call.setArguments(
        {QStringLiteral("org.mpris.MediaPlayer2.Player"), QStringLiteral("PlaybackStatus")});
    return call;
}

// A question to the bus daemon about a name, asked with a plain message: the shared interface
// object of the connection is not for use from several threads.
QDBusMessage askDaemon(const QDBusConnection& bus, const QString& method, const QString& name) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), method);
    call.setArguments({name});
    return bus.call(call, QDBus::Block, 2000);
}

} // namespace

bool isRunning(const QString& id, const QDBusConnection& bus) {
    if (id.isEmpty())
        return false;
    const QDBusMessage reply = askDaemon(bus, QStringLiteral("NameHasOwner"), id);
    return reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
           reply.arguments().constFirst().toBool();
}

App spotify() {
    return {mprisPrefix + QStringLiteral("spotify"),
            QStringLiteral("Spotify"),
            QStringLiteral("spotify"),
            {QStringLiteral("spotify.desktop"), QStringLiteral("com.spotify.Client.desktop"),
             QStringLiteral("spotify_spotify.desktop")}};
}

App musicPlayer(const QString& busName, const QString& name) {
    // "vlc.instance1234" is VLC; Flatpak names its entries in reverse-domain form
    // ("io.mpv.Mpv"), Snap as "<snap>_<app>".
    QString program = busName.startsWith(mprisPrefix) ? busName.mid(mprisPrefix.size()) : busName;
    program = program.section(u'.', 0, 0).toLower();
    QStringList ids;
    if (!program.isEmpty())
        ids = {program + QStringLiteral(".desktop"),
               program + u'_' + program + QStringLiteral(".desktop")};
    return {busName, name, program, ids};
}

Places Places::system() {
    Places places;
    QStringList dataDirs{QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)};
    dataDirs += splitPath(qgetenv("XDG_DATA_DIRS"));
    if (qEnvironmentVariableIsEmpty("XDG_DATA_DIRS"))
        dataDirs += {QStringLiteral("/usr/local/share"), QStringLiteral("/usr/share")};
    // Flatpak and Snap add these to XDG_DATA_DIRS in a login session; a session started
    // otherwise may lack them.
    const QString flatpakUser = QDir::homePath() + QStringLiteral("/.local/share/flatpak/exports");
    dataDirs +=
        {flatpakUser + QStringLiteral("/share"), QStringLiteral("/var/lib/flatpak/exports/share"),
         QStringLiteral("/var/lib/snapd/desktop")};
    for (const QString& dir : std::as_const(dataDirs))
        places.applicationDirs.append(dir + QStringLiteral("/applications"));
    places.applicationDirs.removeDuplicates();
    places.binDirs = splitPath(qgetenv("PATH"));
    places.binDirs += {flatpakUser + QStringLiteral("/bin"),
                       QStringLiteral("/var/lib/flatpak/exports/bin"), QStringLiteral("/snap/bin")};
    places.binDirs.removeDuplicates();
    return places;
}

QString installation(const App& app, const Places& places) {
    for (const QString& dir : places.applicationDirs) {
        for (const QString& id : app.desktopIDs) {
            const QString path = dir + u'/' + id;
            if (QFileInfo::exists(path))
                return path;
        }
        // Flatpak's reverse-domain entries that end in the program's name ("io.mpv.Mpv").
        if (!app.program.isEmpty()) {
            const QStringList entries = QDir(dir).entryList(
                {QStringLiteral("*.") + app.program + QStringLiteral(".desktop")}, QDir::Files);
            if (!entries.isEmpty())
                return dir + u'/' + entries.constFirst();
        }
    }
    QStringList names{app.program};
    for (const QString& id : app.desktopIDs)
        names.append(id.chopped(int(sizeof ".desktop") - 1)); // Flatpak's exported commands
    return findExecutable(names, places.binDirs);
}

Access status(const App& app, const QDBusConnection& bus, const Places& places) {
    if (isRunning(app.id, bus))
        return Access::needsAsk;
    return installation(app, places).isEmpty() ? Access::notInstalled : Access::notRunning;
}

ProbeResult probe(const QString& id, double timeoutSeconds, const QDBusConnection& bus) {
    if (id.isEmpty() || !bus.isConnected())
        return ProbeResult::unknown;
    const int timeoutMs = int(std::lround(std::max(timeoutSeconds, 0.001) * 1000));
    const QDBusMessage reply = bus.call(playbackStatusCall(id), QDBus::Block, timeoutMs);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return ProbeResult::answered;
    // The bus daemon (or a sandbox's proxy in front of it) refused to pass the call on.
    if (reply.errorName() == u"org.freedesktop.DBus.Error.AccessDenied")
        return ProbeResult::denied;
    return ProbeResult::unknown;
}

bool launch(const App& app, const Places& places) {
    const QString found = installation(app, places);
    if (found.isEmpty())
        return false;
    if (!found.endsWith(QStringLiteral(".desktop")))
        return QProcess::startDetached(found, {});
    // A launcher entry is started the way the desktop starts it, sandbox and all.
    const QString gio = QStandardPaths::findExecutable(QStringLiteral("gio"));
    if (!gio.isEmpty())
        return QProcess::startDetached(gio, {QStringLiteral("launch"), found});
    const QString gtkLaunch = QStandardPaths::findExecutable(QStringLiteral("gtk-launch"));
    if (!gtkLaunch.isEmpty())
        return QProcess::startDetached(gtkLaunch, {QFileInfo(found).fileName()});
    const QString exe = findExecutable({app.program}, places.binDirs);
    return !exe.isEmpty() && QProcess::startDetached(exe, {});
}

QString statusText(Access access, const QString& appName) {
    switch (access) {
    case Access::notInstalled:
        return QStringLiteral("Not installed");
    case Access::notRunning:
    case Access::needsAsk:
        return QStringLiteral("Not connected yet");
    case Access::asking:
        return QStringLiteral("Waiting for %1 to answer…").arg(appName);
    case Access::noAnswer:
        return QStringLiteral("No answer from %1 yet. Make sure it has started, then try again, "
                              "or allow MIRL PRO in your app permission settings.")
            .arg(appName);
    case Access::allowed:
        return QStringLiteral("Connected");
    case Access::denied:
        return QStringLiteral("Blocked. Let MIRL PRO talk to %1 in your app permission settings.")
            .arg(appName);
    }
    return {};
}

QStringList actions(Access access) {
    switch (access) {
    case Access::notRunning:
    case Access::needsAsk:
        return {QStringLiteral("Allow")};
    case Access::noAnswer:
        return {QStringLiteral("Settings"), QStringLiteral("Try Again")};
    case Access::denied:
        return {QStringLiteral("Open Settings")};
    default:
        return {};
    }
}

std::optional<qint64> playerProcess(const QStringList& ids, const QDBusConnection& bus) {
    std::optional<qint64> firstRunning;
    for (const QString& id : ids) {
        const QDBusMessage owner = askDaemon(bus, QStringLiteral("GetConnectionUnixProcessID"), id);
        const qint64 pid = owner.type() == QDBusMessage::ReplyMessage
                               ? owner.arguments().value(0).toLongLong()
                               : 0;
        if (pid <= 0)
            continue;
        const QDBusMessage reply = bus.call(playbackStatusCall(id), QDBus::Block, 1000);
        const bool playing = reply.type() == QDBusMessage::ReplyMessage &&
                             !reply.arguments().isEmpty() &&
                             reply.arguments().constFirst().value<QDBusVariant>().variant() ==
                                 QStringLiteral("Playing");
        if (playing)
            return pid;
        if (!firstRunning)
            firstRunning = pid;
    }
    return firstRunning;
}

} // namespace MirlPlayer::MusicAutomation
