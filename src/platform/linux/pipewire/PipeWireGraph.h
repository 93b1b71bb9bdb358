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

// Finds the output stream through which process `pid` plays: a node of class
// "Stream/Output/Audio" owned by a client of that process. The kernel-checked
// "pipewire.sec.pid" of the client wins; clients connected through a sound server bridge carry
// the bridge's pid there, so the application's "application.process.id" is the fallback. Of
// several streams the newest (highest serial) wins. Objects with broken properties are skipped.
std::optional<ProcessStream> findProcessStream(const std::vector<PipeWireObject>& objects,
                                               qint64 pid);

} // namespace MirlPlayer
