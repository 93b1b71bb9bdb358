#include "platform/linux/pipewire/PipeWireGraph.h"

#include <QSet>
#include <array>
#include <unistd.h>

namespace MirlPlayer {

namespace {

const QString clientType = QStringLiteral("PipeWire:Interface:Client");
const QString nodeType = QStringLiteral("PipeWire:Interface:Node");
constexpr int rankCount = 5;
// Deeper than any real process tree; ends a walk through a parent loop in a broken table.
constexpr int maxAncestors = 64;

std::optional<qint64> number(const QHash<QString, QString>& props, const QString& key) {
    const auto it = props.find(key);
    if (it == props.end())
        return std::nullopt;
    bool ok = false;
    const qint64 value = it->trimmed().toLongLong(&ok);
    if (!ok || value <= 0)
        return std::nullopt;
    return value;
}

std::optional<ProcessStream> newestStreamOf(const std::vector<PipeWireObject>& objects,
                                            const QSet<quint32>& clients) {
    std::optional<ProcessStream> best;
    if (clients.isEmpty())
        return best;
    for (const PipeWireObject& object : objects) {
        if (object.type != nodeType ||
            object.props.value(QStringLiteral("media.class")) != u"Stream/Output/Audio")
            continue;
        const auto client = number(object.props, QStringLiteral("client.id"));
        const auto serial = number(object.props, QStringLiteral("object.serial"));
        if (!client || !serial || !clients.contains(quint32(*client)))
            continue;
        if (!best || quint64(*serial) > best->serial)
            best = ProcessStream{object.id, quint64(*serial)};
    }
    return best;
}

bool descendsFrom(std::optional<qint64> pid, qint64 ancestor, const ProcessFacts& facts) {
    if (!pid)
        return false;
    qint64 current = *pid;
    for (int step = 0; step < maxAncestors && current > 1; ++step) {
        current = facts.parentOf(current);
        if (current == ancestor)
            return true;
    }
    return false;
}

// The rank of a client for the player (0 best), or -1 when it is none of the player's.
int rankOf(const QHash<QString, QString>& props, qint64 pid, const ProcessFacts* facts,
           const QString& playerSandbox, const QString& playerBinary) {
    const auto checked = number(props, QStringLiteral("pipewire.sec.pid"));
    const auto declared = number(props, QStringLiteral("application.process.id"));
    if (checked == pid)
        return 0;
    if (declared == pid)
        return 1;
    if (!facts)
        return -1;
    if (descendsFrom(checked, pid, *facts) || descendsFrom(declared, pid, *facts)) {
        // A process that started this program as well (init, the session, a terminal) is a
        // launcher of everything below it, not a player whose sound a child plays.
        if (!descendsFrom(qint64(::getpid()), pid, *facts))
            return 2;
    }
    if (playerSandbox.isEmpty())
        return -1;
    if (props.value(QStringLiteral("pipewire.access.portal.app_id")) == playerSandbox ||
        (checked && facts->sandboxAppID(*checked) == playerSandbox) ||
        (declared && facts->sandboxAppID(*declared) == playerSandbox))
        return 3;
    if (!playerBinary.isEmpty() &&
        props.value(QStringLiteral("application.process.binary")) == playerBinary)
        return 4;
    return -1;
}

} // namespace

std::optional<ProcessStream> findProcessStream(const std::vector<PipeWireObject>& objects,
                                               qint64 pid, const ProcessFacts* facts) {
    if (pid <= 0)
        return std::nullopt;
    const QString sandbox = facts ? facts->sandboxAppID(pid) : QString();
    const QString binary = sandbox.isEmpty() ? QString() : facts->binaryName(pid);
    std::array<QSet<quint32>, rankCount> ranked;
    for (const PipeWireObject& object : objects) {
        if (object.type != clientType)
            continue;
        const int rank = rankOf(object.props, pid, facts, sandbox, binary);
        if (rank >= 0)
            ranked[std::size_t(rank)].insert(object.id);
    }
    for (const QSet<quint32>& clients : ranked) {
        if (auto stream = newestStreamOf(objects, clients))
            return stream;
    }
    return std::nullopt;
}

} // namespace MirlPlayer
