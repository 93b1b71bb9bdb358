#include "app/StatusItem.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

namespace MirlPlayer {

namespace {
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
} // namespace

StatusItemVisibility::StatusItemVisibility(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
    , m_watcher(new QDBusServiceWatcher(watcherService, bus,
                                        QDBusServiceWatcher::WatchForOwnerChange, this)) {
    connect(m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { refresh(); });
    m_bus.connect(watcherService, watcherPath, watcherService,
                  QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(hostRegistered()));
    refresh();
}

void StatusItemVisibility::hostRegistered() {
    refresh();
}

void StatusItemVisibility::refresh() {
    const int token = ++m_token;
    QDBusMessage ask = QDBusMessage::createMethodCall(
        watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    ask << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    auto* call = new QDBusPendingCallWatcher(m_bus.asyncCall(ask, 2000), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, token, call] {
        call->deleteLater();
        if (token != m_token)
            return;
        const QDBusPendingReply<QDBusVariant> reply = *call;
        // No watcher, or one that cannot answer: nothing draws the item.
        setVisible(!reply.isError() && reply.value().variant().toBool());
    });
}

void StatusItemVisibility::setVisible(bool visible) {
    if (visible == m_visible)
        return;
    m_visible = visible;
    Q_EMIT visibleChanged(visible);
}

StatusItem::StatusItem(MenuBuilder build, QObject* parent)
    : QObject(parent)
    , m_build(std::move(build))
    , m_icon(std::make_unique<QSystemTrayIcon>()) {
    m_icon->setIcon(QIcon::fromTheme(QStringLiteral("com.kestrova.mirlpro"),
                                     QIcon(QStringLiteral(":/icons/com.kestrova.mirlpro.svg"))));
    m_icon->setToolTip(QStringLiteral("MIRL PRO"));
    rebuild();
    m_icon->show();
}

StatusItem::~StatusItem() = default;

void StatusItem::rebuild() {
    std::unique_ptr<QMenu> fresh = m_build();
    m_icon->setContextMenu(fresh.get());
    m_menu = std::move(fresh); // the old menu goes only after the item holds the new one
}

} // namespace MirlPlayer
