#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace MirlPlayer::MusicAutomation {
Q_NAMESPACE

// Whether MIRL PRO can talk to one player. The player answers over MPRIS on the session bus, so
// the state comes from whether it is installed and running, and from a real call to it.
enum class Access { notInstalled, notRunning, needsAsk, asking, noAnswer, allowed, denied };
Q_ENUM_NS(Access)

// The outcome of one real call to a player.
enum class ProbeResult { answered, denied, unknown };

// One player of the music step. `id` is its MPRIS bus name; `program` the name it is installed
// under (executable, launcher entry), and `desktopIDs` the launcher entries of its packagings
// (a distribution package, Flatpak, Snap).
struct App {
    QString id;
    QString name;
    QString program;
    QStringList desktopIDs;
    bool operator==(const App&) const = default;
};

// Spotify, under its MPRIS name and each of its packagings.
App spotify();
// The player of the part "Music", known by its MPRIS bus name; `name` is what the row shows.
App musicPlayer(const QString& busName, const QString& name);

// Where installed programs are looked for: launcher entries (applications folders, Flatpak's
// and Snap's exports included) and executables (PATH, Flatpak's exported commands, /snap/bin).
struct Places {
    QStringList applicationDirs;
    QStringList binDirs;
    static Places system();
};

// The installed launcher entry of the app, else its executable; empty when it is not installed.
QString installation(const App& app, const Places& places);

// Whether the player is on the bus now. Asks the bus daemon only.
bool isRunning(const QString& id, const QDBusConnection& bus);

// Installed and running tell the state; the call that proves access is probe(). Asks the bus
// daemon only (whether the name has an owner); never calls the player.
Access status(const App& app, const QDBusConnection& bus, const Places& places);

// A real call to the player (its PlaybackStatus), waiting at most `timeoutSeconds`: answered;
// denied when the bus refuses the call (a sandbox's policy); unknown when no answer came in time or
// the player is not there. Blocks: never on the GUI thread.
ProbeResult probe(const QString& id, double timeoutSeconds, const QDBusConnection& bus);

// Starts the player in the background from its launcher entry or executable. False when it is
// not installed or could not be started.
bool launch(const App& app, const Places& places);

// What the row says for the state, and its buttons.
QString statusText(Access access, const QString& appName);
QStringList actions(Access access);

} // namespace MirlPlayer::MusicAutomation

namespace MirlPlayer::MusicAutomation {

// The process of the player to listen to among `ids` (bus names, in order of preference): the
// first that plays, else the first that runs. Calls the players: never on the GUI thread.
std::optional<qint64> playerProcess(const QStringList& ids, const QDBusConnection& bus);

} // namespace MirlPlayer::MusicAutomation
