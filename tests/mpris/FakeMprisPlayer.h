#pragma once

// A stand-in MPRIS player for tests: it answers with whatever D-Bus types a test puts in its
// property maps, records the commands it receives, and can hang. It runs on a thread of its own,
// so that a test may make blocking calls to it from the GUI thread.

#include "support/PrivateBus.h"
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>

namespace MirlTest {

class FakeMprisPlayer : public QDBusVirtualObject {
public:
    // Connects to the bus at `address` under `busName` and serves /org/mpris/MediaPlayer2.
    FakeMprisPlayer(const QString& address, const QString& busName)
        : m_busName(busName) {
        m_thread.start();
        moveToThread(&m_thread);
        QMetaObject::invokeMethod(
            this,
            [this, address] {
                m_connection =
                    QDBusConnection::connectToBus(address, m_busName + QStringLiteral("-fake"));
                m_connection.registerVirtualObject(QStringLiteral("/org/mpris/MediaPlayer2"), this);
                m_connection.registerService(m_busName);
            },
            Qt::BlockingQueuedConnection);
    }
    ~FakeMprisPlayer() override {
        leave();
        m_thread.quit();
        m_thread.wait();
    }

    // Drops the bus name, as a player that quits.
    void leave() {
        if (!m_thread.isRunning())
            return;
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_connection.isConnected()) {
                    m_connection.unregisterService(m_busName);
                    m_connection.unregisterObject(QStringLiteral("/org/mpris/MediaPlayer2"));
                    QDBusConnection::disconnectFromBus(m_busName + QStringLiteral("-fake"));
                    m_connection = QDBusConnection(QString());
                }
            },
            Qt::BlockingQueuedConnection);
    }

    void setPlayerProperties(const QVariantMap& properties) {
        QMutexLocker lock(&m_mutex);
        m_player = properties;
    }
    void setIdentity(const QString& identity) {
        QMutexLocker lock(&m_mutex);
        m_identity = identity;
    }
    // As the Spotify client: OpenUri("spotify:track:ID") makes it play that track from the start.
    void setOpensUris(bool opens) {
        QMutexLocker lock(&m_mutex);
        m_opensUris = opens;
    }
    void setHanging(bool hanging) {
        QMutexLocker lock(&m_mutex);
        m_hanging = hanging;
    }
    // "Method(arg, arg)" for each player command received, in order.
    QStringList commands() const {
        QMutexLocker lock(&m_mutex);
        return m_commands;
    }
    int messagesReceived() const {
        QMutexLocker lock(&m_mutex);
        return m_messages;
    }

    void emitSignal(const QString& interface, const QString& name, const QVariantList& arguments) {
        QMetaObject::invokeMethod(
            this,
            [=, this] {
                QDBusMessage message = QDBusMessage::createSignal(
                    QStringLiteral("/org/mpris/MediaPlayer2"), interface, name);
                message.setArguments(arguments);
                m_connection.send(message);
            },
            Qt::BlockingQueuedConnection);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        QMutexLocker lock(&m_mutex);
        ++m_messages;
        if (m_hanging)
            return true; // never answers
        const QVariantList args = message.arguments();
        if (message.interface() == u"org.freedesktop.DBus.Properties") {
            const bool root =
                !args.isEmpty() && args.constFirst().toString() == u"org.mpris.MediaPlayer2";
            const QVariantMap all =
                root ? QVariantMap{{QStringLiteral("Identity"), m_identity}} : m_player;
            if (message.member() == u"GetAll") {
                connection.send(message.createReply(QVariant::fromValue(all)));
            } else if (message.member() == u"Get" && args.size() == 2) {
                const QString name = args.at(1).toString();
                if (all.contains(name))
                    connection.send(
                        message.createReply(QVariant::fromValue(QDBusVariant(all.value(name)))));
                else
                    connection.send(message.createErrorReply(QDBusError::UnknownProperty, name));
            }
            return true;
        }
        QStringList parts;
        for (const QVariant& arg : args) {
            if (arg.metaType() == QMetaType::fromType<QDBusObjectPath>())
                parts.append(arg.value<QDBusObjectPath>().path());
            else
                parts.append(arg.toString());
        }
        m_commands.append(message.member() + u'(' + parts.join(QStringLiteral(", ")) + u')');
        connection.send(message.createReply());
        const QString uri = args.isEmpty() ? QString() : args.constFirst().toString();
        if (message.member() == u"OpenUri" && m_opensUris && uri.startsWith(u"spotify:track:")) {
            const QString id = uri.mid(14);
            m_player[QStringLiteral("Metadata")] = QVariantMap{
                {QStringLiteral("mpris:trackid"),
                 QVariant::fromValue(QDBusObjectPath(QStringLiteral("/com/spotify/track/") + id))},
                {QStringLiteral("xesam:title"), QVariant(QStringLiteral("Song ") + id)},
                {QStringLiteral("mpris:length"), QVariant(qlonglong(200'000'000))}};
            m_player[QStringLiteral("PlaybackStatus")] = QStringLiteral("Playing");
            m_player[QStringLiteral("Position")] = qlonglong(0);
            QDBusMessage changed =
                QDBusMessage::createSignal(QStringLiteral("/org/mpris/MediaPlayer2"),
                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                           QStringLiteral("PropertiesChanged"));
            changed.setArguments(
                {QStringLiteral("org.mpris.MediaPlayer2.Player"),
                 QVariantMap{{QStringLiteral("PlaybackStatus"), QStringLiteral("Playing")}},
                 QStringList()});
            connection.send(changed);
        }
        return true;
    }

private:
    QString m_busName;
    QThread m_thread;
    QDBusConnection m_connection{QString()};
    mutable QMutex m_mutex;
    QVariantMap m_player;
    QString m_identity = QStringLiteral("Fake Player");
    bool m_hanging = false;
    bool m_opensUris = false;
    QStringList m_commands;
    int m_messages = 0;
};

} // namespace MirlTest
