#include "platform/linux/x11/GnomeShellOverview.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace MirlPlayer {

static const QString shellService = QStringLiteral("org.gnome.Shell");
static const QString shellPath = QStringLiteral("/org/gnome/Shell");

GnomeShellOverview::GnomeShellOverview(QObject* parent)
    : QObject(parent) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(shellService, shellPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                QStringLiteral("PropertiesChanged"), this,
                SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    if (!bus.interface() || !bus.interface()->isServiceRegistered(shellService))
        return;
    QDBusMessage get = QDBusMessage::createMethodCall(
        shellService, shellPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << shellService << QStringLiteral("OverviewActive");
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(get, 1000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        QDBusPendingReply<QDBusVariant> reply = *w;
        if (!reply.isError())
            m_active = reply.value().variant().toBool();
        w->deleteLater();
    });
}

void GnomeShellOverview::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                           const QStringList&) {
    if (interface != shellService)
        return;
    const auto it = changed.constFind(QStringLiteral("OverviewActive"));
    if (it != changed.constEnd())
        m_active = it->toBool();
}

} // namespace MirlPlayer
