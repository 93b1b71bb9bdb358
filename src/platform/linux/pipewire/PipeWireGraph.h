#pragma once

#include <QHash>
#include <QString>
#include <QtGlobal>
#include <optional>
#include <vector>

namespace MirlPlayer {

// What the registry told about one object of the audio graph: its id, its interface type
// ("PipeWire:Interface:Client", "PipeWire:Interface:Node", …) and its properties. For clients
// the properties include those of the client's info, which carry the application's own pid.
struct PipeWireObject {
    quint32 id = 0;
    QString type;
    QHash<QString, QString> props;
};

// A process's output stream: the node's id (for watching it go) and its serial (for linking).
struct ProcessStream {
    quint32 nodeID = 0;
    quint64 serial = 0;
    bool operator==(const ProcessStream&) const = default;
};

// What the system knows about processes, for telling which sound clients belong to a player
// whose sound does not come from the pid the session bus names.
class ProcessFacts {
public:
    virtual ~ProcessFacts() = default;
    // The parent's pid, or 0 when unknown.
    virtual qint64 parentOf(qint64 pid) const = 0;
    // The sandbox the process runs in: its Flatpak app id or its Snap name; empty for none.
    virtual QString sandboxAppID(qint64 pid) const = 0;
    // The file name of the process's executable, or empty.
    virtual QString binaryName(qint64 pid) const = 0;
};

// Finds the output stream through which the player with pid `pid` plays: a node of class
// "Stream/Output/Audio" owned by a client of that player. Clients are ranked, and the best rank
// that owns a stream wins; of several streams of one rank the newest (highest serial):
//  1. the kernel-checked "pipewire.sec.pid" is the player's pid;
//  2. the declared "application.process.id" is (clients that come through a sound server bridge
//     carry the bridge's pid as the checked one);
//  3. either pid is a descendant of the player (browsers and Electron players play from a child
//     process), unless the player's pid also started this program (init, the session);
//  4. the player runs in a sandbox and the client belongs to the same one: its
//     "pipewire.access.portal.app_id", or the sandbox of either of its pids (a Flatpak player's
//     bus name may be held through a proxy process, and the sandbox's own pids are not the
//     host's);
//  5. the player runs in a sandbox and the client's "application.process.binary" names the
//     player's executable.
// Without `facts` only the first two ranks apply. Objects with broken properties are skipped.
std::optional<ProcessStream> findProcessStream(const std::vector<PipeWireObject>& objects,
                                               qint64 pid, const ProcessFacts* facts = nullptr);

} // namespace MirlPlayer
