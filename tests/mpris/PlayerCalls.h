#pragma once

// Reads and calls of a real player's org.mpris.MediaPlayer2.Player, straight from the player.

#include "platform/linux/mpris/MprisMetadata.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace MirlTest {

inline QVariant playerProperty(const QDBusConnection& bus, const QString& service,
                               const QString& name) {
    QDBusMessage get = QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/mpris/MediaPlayer2"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << QStringLiteral("org.mpris.MediaPlayer2.Player") << name;
    const QDBusMessage reply = bus.call(get, QDBus::Block, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

inline QString statusOf(const QDBusConnection& bus, const QString& service) {
    return playerProperty(bus, service, QStringLiteral("PlaybackStatus")).toString();
}

inline QString titleOf(const QDBusConnection& bus, const QString& service) {
    return MirlPlayer::Mpris::metadataMap(playerProperty(bus, service, QStringLiteral("Metadata")))
        .value(QStringLiteral("xesam:title"))
        .toString();
}

inline double positionOf(const QDBusConnection& bus, const QString& service) {
    return playerProperty(bus, service, QStringLiteral("Position")).toLongLong() / 1e6;
}

inline void callPlayer(const QDBusConnection& bus, const QString& service, const QString& method) {
    bus.call(QDBusMessage::createMethodCall(service, QStringLiteral("/org/mpris/MediaPlayer2"),
                                            QStringLiteral("org.mpris.MediaPlayer2.Player"),
                                            method),
             QDBus::Block, 5000);
}

} // namespace MirlTest
