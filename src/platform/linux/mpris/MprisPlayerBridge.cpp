#include "platform/linux/mpris/MprisPlayerBridge.h"

#include "core/Preferences.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDesktopServices>
#include <QLoggingCategory>
#include <QMutexLocker>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcMpris, "mirl.mpris")

namespace MirlPlayer {

namespace {

const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");
const QString mprisPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString rootInterface = QStringLiteral("org.mpris.MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString musicPlayerKey = QStringLiteral("musicPlayer");

QString methodForVerb(const QString& verb) {
    if (verb == u"playpause")
        return QStringLiteral("PlayPause");
    if (verb == u"next track")
        return QStringLiteral("Next");
    if (verb == u"previous track")
        return QStringLiteral("Previous");
    return {};
}

bool isObjectPath(const QString& text) {
    static const QRegularExpression path(QStringLiteral(R"(\A(/|(/[A-Za-z0-9_]+)+)\z)"));
    return path.match(text).hasMatch();
}

} // namespace

MprisPlayerBridge::MprisPlayerBridge(Preferences& preferences, const QDBusConnection& bus)
    : MprisPlayerBridge(preferences, bus, Options{}) {}

MprisPlayerBridge::MprisPlayerBridge(Preferences& preferences, const QDBusConnection& bus,
                                     Options options)
    : m_bus(bus)
    , m_options(std::move(options))
    , m_musicPlayer(preferences.stringValue(musicPlayerKey)) {
    connect(&preferences, &Preferences::changed, this, [this, &preferences](const QString& key) {
        if (key != musicPlayerKey)
            return;
        const QString value = preferences.stringValue(musicPlayerKey);
        {
            QMutexLocker lock(&m_mutex);
            m_musicPlayer = value;
        }
        notifyChanged();
    });
    if (!m_bus.isConnected()) {
        qCDebug(lcMpris) << "no session bus:" << m_bus.lastError().message();
        return;
    }
    // Subscribe before listing, so that no player can slip in between.
    m_bus.connect(busService, busPath, busService, QStringLiteral("NameOwnerChanged"), this,
                  SLOT(onNameOwnerChanged(QString, QString, QString)));
    m_bus.connect(QString(), mprisPath, propertiesInterface, QStringLiteral("PropertiesChanged"),
                  this, SLOT(onPlayerSignal(QDBusMessage)));
    m_bus.connect(QString(), mprisPath, playerInterface, QStringLiteral("Seeked"), this,
                  SLOT(onPlayerSignal(QDBusMessage)));

    const QDBusMessage names = call(busService, busPath, busService, QStringLiteral("ListNames"));
    if (names.type() != QDBusMessage::ReplyMessage || names.arguments().isEmpty())
        return;
    for (const QString& name : names.arguments().constFirst().toStringList()) {
        if (!name.startsWith(Mpris::namePrefix))
            continue;
        const QDBusMessage owner =
            call(busService, busPath, busService, QStringLiteral("GetNameOwner"), {name});
        if (owner.type() == QDBusMessage::ReplyMessage && !owner.arguments().isEmpty()) {
            QMutexLocker lock(&m_mutex);
            m_owners.insert(name, owner.arguments().constFirst().toString());
        }
    }
}

QDBusMessage MprisPlayerBridge::call(const QString& service, const QString& path,
                                     const QString& interface, const QString& method,
                                     const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    ++m_calls;
    return m_bus.call(message, QDBus::Block, m_options.callTimeoutMs);
}

QVariant MprisPlayerBridge::property(const QString& service, const QString& interface,
                                     const QString& name) {
    const QDBusMessage reply =
        call(service, mprisPath, propertiesInterface, QStringLiteral("Get"), {interface, name});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

QString MprisPlayerBridge::serviceFor(Source source) const {
    if (source == Source::none)
        return {};
    QMutexLocker lock(&m_mutex);
    const auto chosen =
        Mpris::choosePlayers(m_owners.keys(), m_options.spotifyService, m_musicPlayer);
    return source == Source::spotify ? chosen.spotify : chosen.music;
}

Snapshot MprisPlayerBridge::fetch(Source source) {
    const QString service = serviceFor(source);
    if (service.isEmpty())
        return Snapshot::empty(source);
    const QDBusMessage reply =
        call(service, mprisPath, propertiesInterface, QStringLiteral("GetAll"), {playerInterface});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        qCDebug(lcMpris) << "sample of" << service << "failed:" << reply.errorName();
        return Snapshot::empty(source);
    }
    return Mpris::snapshotFromPlayerProperties(Mpris::metadataMap(reply.arguments().constFirst()),
                                               source);
}

void MprisPlayerBridge::command(Source source, const QString& verb) {
    const QString method = methodForVerb(verb);
    const QString service = serviceFor(source);
    if (method.isEmpty() || service.isEmpty())
        return;
    call(service, mprisPath, playerInterface, method);
}

void MprisPlayerBridge::seek(Source source, double seconds) {
    const QString service = serviceFor(source);
    if (service.isEmpty() || !std::isfinite(seconds))
        return;
    const auto target = qint64(std::max(seconds, 0.0) * 1e6);
    // SetPosition names the track it means, so a seek that arrives after a track change is
    // ignored by the player rather than applied to the wrong song.
    const QVariantMap metadata =
        Mpris::metadataMap(property(service, playerInterface, QStringLiteral("Metadata")));
    const QVariant trackId = metadata.value(QStringLiteral("mpris:trackid"));
    QDBusObjectPath path;
    if (trackId.metaType() == QMetaType::fromType<QDBusObjectPath>())
        path = trackId.value<QDBusObjectPath>();
    else if (trackId.metaType().id() == QMetaType::QString && isObjectPath(trackId.toString()))
        path = QDBusObjectPath(trackId.toString());
    if (!path.path().isEmpty()) {
        call(service, mprisPath, playerInterface, QStringLiteral("SetPosition"),
             {QVariant::fromValue(path), QVariant::fromValue(target)});
        return;
    }
    // A player without track ids can still move relative to where it is.
    const double nowMs =
        Mpris::microsecondsToMs(property(service, playerInterface, QStringLiteral("Position")));
    call(service, mprisPath, playerInterface, QStringLiteral("Seek"),
         {QVariant::fromValue(target - qint64(nowMs * 1000))});
}

std::optional<qint64> MprisPlayerBridge::pid(Source source) {
    const QString service = serviceFor(source);
    if (service.isEmpty())
        return std::nullopt;
    const QDBusMessage reply = call(busService, busPath, busService,
                                    QStringLiteral("GetConnectionUnixProcessID"), {service});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    bool ok = false;
    const qint64 value = reply.arguments().constFirst().toLongLong(&ok);
    if (!ok || value <= 0)
        return std::nullopt;
    return value;
}

QString MprisPlayerBridge::displayName(Source source) {
    if (source == Source::spotify)
        return QStringLiteral("Spotify");
    const QString service = serviceFor(source);
    if (service.isEmpty())
        return sourceRawValue(source);
    const QString identity =
        Mpris::cleanText(property(service, rootInterface, QStringLiteral("Identity")));
    if (!identity.trimmed().isEmpty())
        return identity;
    return service.mid(Mpris::namePrefix.size()).section(u'.', 0, 0);
}

void MprisPlayerBridge::openApplication(Source source) {
    const QString service = serviceFor(source);
    if (!service.isEmpty()) {
        // A running player is only brought forward; nothing waits for it.
        m_bus.asyncCall(QDBusMessage::createMethodCall(service, mprisPath, rootInterface,
                                                       QStringLiteral("Raise")),
                        m_options.callTimeoutMs);
        return;
    }
    QString program;
    if (source == Source::spotify) {
        program = QStringLiteral("spotify");
    } else if (source == Source::music) {
        QMutexLocker lock(&m_mutex);
        program = m_musicPlayer.isEmpty() ? QStringLiteral("cider") : m_musicPlayer;
    }
    const QString path = QStandardPaths::findExecutable(program);
    if (!program.isEmpty() && !path.isEmpty())
        QProcess::startDetached(path, {});
}

void MprisPlayerBridge::openUrl(const QUrl& url) {
    const QString spotify = serviceFor(Source::spotify);
    if (url.scheme() == u"spotify" && !spotify.isEmpty()) {
        m_bus.asyncCall(QDBusMessage::createMethodCall(spotify, mprisPath, playerInterface,
                                                       QStringLiteral("OpenUri"))
                            << url.toString(),
                        m_options.callTimeoutMs);
        return;
    }
    QDesktopServices::openUrl(url);
}

bool MprisPlayerBridge::openUri(Source source, const QString& uri) {
    const QString service = serviceFor(source);
    if (service.isEmpty())
        return false;
    return call(service, mprisPath, playerInterface, QStringLiteral("OpenUri"), {uri}).type() ==
           QDBusMessage::ReplyMessage;
}

void MprisPlayerBridge::onNameOwnerChanged(const QString& name, const QString& oldOwner,
                                           const QString& newOwner) {
    if (!name.startsWith(Mpris::namePrefix))
        return;
    {
        QMutexLocker lock(&m_mutex);
        if (newOwner.isEmpty())
            m_owners.remove(name);
        else
            m_owners.insert(name, newOwner);
    }
    // A player that appears or leaves changes what the panel shows.
    notifyChanged();
}

bool MprisPlayerBridge::isChosenOwner(const QString& uniqueName) const {
    QMutexLocker lock(&m_mutex);
    const auto chosen =
        Mpris::choosePlayers(m_owners.keys(), m_options.spotifyService, m_musicPlayer);
    return (!chosen.spotify.isEmpty() && m_owners.value(chosen.spotify) == uniqueName) ||
           (!chosen.music.isEmpty() && m_owners.value(chosen.music) == uniqueName);
}

void MprisPlayerBridge::onPlayerSignal(const QDBusMessage& message) {
    if (message.member() == u"PropertiesChanged") {
        const QVariantList args = message.arguments();
        if (args.isEmpty() || args.constFirst().toString() != playerInterface)
            return;
    }
    if (isChosenOwner(message.service()))
        notifyChanged();
}

} // namespace MirlPlayer
