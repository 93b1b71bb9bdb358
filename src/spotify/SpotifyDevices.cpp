// Device resolution: which of the account's Spotify Connect devices is the client on this computer.

#include "spotify/SpotifyLibrary.h"

#include "core/Clock.h"
#include "core/PrivateFile.h"

#include <QSysInfo>

namespace MirlPlayer {

namespace {

constexpr double kDeviceCacheLifetime = 30.0;

// Spotify names a desktop client after the machine; typographic apostrophes differ by platform.
QString normalizedName(QString name) {
    name = name.toLower();
    name.replace(u'’', u'\'');
    name.replace(u'‘', u'\'');
    return name.trimmed();
}

// The value of one assignment in an environment-style file such as /etc/machine-info, with its
// shell quoting removed.
QString shellValue(QStringView raw) {
    raw = raw.trimmed();
    if (raw.size() >= 2 && (raw.front() == u'"' || raw.front() == u'\'') &&
        raw.back() == raw.front()) {
        const QChar quote = raw.front();
        raw = raw.mid(1, raw.size() - 2);
        if (quote == u'\'')
            return raw.toString();
        QString out;
        for (qsizetype i = 0; i < raw.size(); ++i) {
            if (raw[i] == u'\\' && i + 1 < raw.size())
                ++i;
            out += raw[i];
        }
        return out;
    }
    return raw.toString();
}

// The "pretty" host name that the desktop shows (as hostnamectl reports it), else the host name.
QString prettyHostName() {
    if (const auto data = readFile(QStringLiteral("/etc/machine-info"), 64 * 1024)) {
        for (const QString& line : QString::fromUtf8(*data).split(u'\n')) {
            if (line.startsWith(u"PRETTY_HOSTNAME=")) {
                const QString value = shellValue(QStringView(line).mid(16));
                if (!value.isEmpty())
                    return value;
            }
        }
    }
    return QSysInfo::machineHostName();
}

QString describe(const QJsonObject& device) {
    const QJsonValue name = device.value(u"name"), type = device.value(u"type");
    QString text = (name.isString() ? name.toString() : QStringLiteral("?")) + u" (" +
                   (type.isString() ? type.toString() : QStringLiteral("?"));
    if (device.value(u"is_active").toBool())
        text += QStringLiteral(", active");
    return text + u')';
}

QString nameOf(const QJsonObject& device) {
    const QJsonValue name = device.value(u"name");
    return name.isString() ? name.toString() : QStringLiteral("?");
}

} // namespace

QString SpotifyLibrary::machineName() const {
    return m_machineName ? *m_machineName : prettyHostName();
}

// Coroutines here return copies of members explicitly: the task's promise moves from whatever
// lvalue it is handed.
QCoro::Task<QJsonArray> SpotifyLibrary::deviceList() {
    if (m_deviceCache && m_deviceCache->expires > now())
        co_return QJsonArray(m_deviceCache->objects);
    const int generation = m_generation;
    const QJsonObject answer = co_await getJSON(QStringLiteral("me/player/devices"));
    if (generation != m_generation)
        throw SpotifyCancellation();
    QJsonArray objects;
    if (answer.value(u"devices").isArray()) {
        const QJsonArray list = answer.value(u"devices").toArray();
        bool allObjects = true;
        for (const QJsonValue& v : list)
            allObjects = allObjects && v.isObject();
        if (allObjects)
            objects = list;
    }
    m_deviceCache = DeviceCache{objects, now() + kDeviceCacheLifetime};
    co_return objects;
}

QCoro::Task<std::optional<QString>>
SpotifyLibrary::resolveThisMac(std::optional<QString> playingURI) {
    const int generation = m_generation;
    const QJsonArray devices = co_await deviceList();

    QList<QJsonObject> computers;
    QStringList ids;
    for (const QJsonValue& v : devices) {
        const QJsonObject device = v.toObject();
        if (device.value(u"type").toString().toLower() != u"computer" ||
            device.value(u"is_restricted").toBool())
            continue;
        computers.append(device);
        if (device.value(u"id").isString())
            ids.append(device.value(u"id").toString());
    }
    if (m_thisMacDeviceID && ids.contains(*m_thisMacDeviceID))
        co_return std::optional<QString>(m_thisMacDeviceID);

    // The song the local client plays is the surest evidence: two computers of the account may
    // carry the same name.
    if (playingURI) {
        std::optional<QJsonObject> player;
        try {
            player = co_await getJSON(QStringLiteral("me/player"));
        } catch (const SpotifyError& error) {
            if (error.isCancellation())
                throw;
        }
        if (generation != m_generation)
            throw SpotifyCancellation();
        if (player) {
            const QJsonObject device = player->value(u"device").toObject();
            const QJsonValue id = device.value(u"id");
            if (id.isString() && ids.contains(id.toString()) &&
                player->value(u"item").toObject().value(u"uri").toString() == *playingURI &&
                !playingURI->isEmpty()) {
                m_thisMacDeviceID = id.toString();
                log(QStringLiteral("Spotify Connect: this Mac is “") + nameOf(device) +
                    QStringLiteral("” (matched by the playing song)"));
                co_return std::optional<QString>(m_thisMacDeviceID);
            }
        }
    }

    const QString host = machineName();
    const QString wanted = normalizedName(host);
    for (const QJsonObject& computer : computers) {
        if (computer.value(u"id").isString() && computer.value(u"name").isString() &&
            normalizedName(computer.value(u"name").toString()) == wanted) {
            m_thisMacDeviceID = computer.value(u"id").toString();
            log(QStringLiteral("Spotify Connect: this Mac is “") + nameOf(computer) +
                QStringLiteral("” (matched by name)"));
            co_return std::optional<QString>(m_thisMacDeviceID);
        }
    }

    QList<QJsonObject> withID;
    for (const QJsonObject& computer : computers)
        if (computer.value(u"id").isString())
            withID.append(computer);
    if (withID.size() == 1) {
        m_thisMacDeviceID = withID.first().value(u"id").toString();
        log(QStringLiteral("Spotify Connect: using the only computer, “") + nameOf(withID.first()) +
            QStringLiteral("”"));
        co_return std::optional<QString>(m_thisMacDeviceID);
    }

    QStringList descriptions;
    for (const QJsonValue& v : devices)
        descriptions.append(describe(v.toObject()));
    log(QStringLiteral("Spotify Connect: couldn't tell which device is this Mac. Devices: ") +
        descriptions.join(QStringLiteral(", ")) + QStringLiteral("; this Mac: ") +
        (host.isEmpty() ? QStringLiteral("?") : host));
    co_return std::nullopt;
}

} // namespace MirlPlayer
