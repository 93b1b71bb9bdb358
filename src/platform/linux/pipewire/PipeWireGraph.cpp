#include "platform/linux/pipewire/PipeWireGraph.h"

#include <QSet>

namespace MirlPlayer {

namespace {

const QString clientType = QStringLiteral("PipeWire:Interface:Client");
const QString nodeType = QStringLiteral("PipeWire:Interface:Node");

std::optional<qint64> number(const QHash<QString, QString>& props, const QString& key) {
    const auto it = props.find(key);
    if (it == props.end())
        return std::nullopt;
    bool ok = false;
    const qint64 value = it->trimmed().toLongLong(&ok);
    if (!ok)
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
        if (!client || !serial || *serial <= 0 || !clients.contains(quint32(*client)))
            continue;
        if (!best || quint64(*serial) > best->serial)
            best = ProcessStream{object.id, quint64(*serial)};
    }
    return best;
}

} // namespace

std::optional<ProcessStream> findProcessStream(const std::vector<PipeWireObject>& objects,
                                               qint64 pid) {
    if (pid <= 0)
        return std::nullopt;
    QSet<quint32> secure;
    QSet<quint32> declared;
    for (const PipeWireObject& object : objects) {
        if (object.type != clientType)
            continue;
        if (number(object.props, QStringLiteral("pipewire.sec.pid")) == pid)
            secure.insert(object.id);
        else if (number(object.props, QStringLiteral("application.process.id")) == pid)
            declared.insert(object.id);
    }
    if (auto stream = newestStreamOf(objects, secure))
        return stream;
    return newestStreamOf(objects, declared);
}

} // namespace MirlPlayer
