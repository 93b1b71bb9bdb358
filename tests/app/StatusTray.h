#pragma once

// A desktop's tray as the status item meets it on the session bus: a StatusNotifierWatcher that
// items register with, and a host's reading of an item's menu over com.canonical.dbusmenu
// (its Menu property, then GetLayout).

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QTest>
#include <QThread>
#include <atomic>

namespace MirlTest {

// The watcher. It answers from a thread of its own, because the toolkit asks it with a blocking
// call from the GUI thread before it shows an item.
class TrayWatcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
public:
    // Serves on `bus` (a connection of its own) under the watcher's name.
    TrayWatcher(QDBusConnection bus, bool host)
        : m_bus(bus)
        , m_host(host) {
        m_bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                             QDBusConnection::ExportAllContents);
        m_thread.start();
        moveToThread(&m_thread); // with the bus's helper that registering made
        m_bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }
    ~TrayWatcher() override {
        m_bus.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
        m_bus.unregisterObject(QStringLiteral("/StatusNotifierWatcher"));
        // Home again before the thread goes, so that the object ends where it is destroyed.
        QThread* home = QThread::currentThread();
        QMetaObject::invokeMethod(
            this, [this, home] { moveToThread(home); }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }
    bool hostRegistered() const { return m_host; }
    // A panel that draws the items comes (or goes), and says so.
    void setHost(bool host) {
        m_host = host;
        m_bus.send(QDBusMessage::createSignal(QStringLiteral("/StatusNotifierWatcher"),
                                              QStringLiteral("org.kde.StatusNotifierWatcher"),
                                              QStringLiteral("StatusNotifierHostRegistered")));
    }
    int protocolVersion() const { return 0; }
    // The bus names of the registered items.
    QStringList items() const {
        QMutexLocker lock(&m_mutex);
        return m_items;
    }

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service, const QDBusMessage& message) {
        QMutexLocker lock(&m_mutex);
        m_items << (service.startsWith(u'/') ? message.service() : service);
    }
    void RegisterStatusNotifierHost(const QString&) {}

private:
    QThread m_thread;
    QDBusConnection m_bus;
    std::atomic<bool> m_host;
    mutable QMutex m_mutex;
    QStringList m_items;
};

// Waits for a call's answer while the event loop runs, so that an item served by this very
// thread can answer.
inline QDBusMessage await(const QDBusConnection& bus, const QDBusMessage& call) {
    QDBusPendingCall pending = bus.asyncCall(call, 5000);
    (void)QTest::qWaitFor([&] { return pending.isFinished(); }, 6000);
    return pending.reply();
}

// One row of a status menu as a host shows it: "---" for a separator, otherwise the label, then
// " [Control+Q]" for a shortcut and " (disabled)" for a row that cannot be chosen. The dbusmenu
// id and every property are kept for closer looks.
struct TrayMenuRow {
    int id = 0;
    QVariantMap properties;
    QString text() const {
        if (properties.value(QStringLiteral("type")).toString() == u"separator")
            return QStringLiteral("---");
        QString text = properties.value(QStringLiteral("label")).toString();
        const QVariant shortcut = properties.value(QStringLiteral("shortcut"));
        if (shortcut.isValid()) {
            QStringList keys;
            for (const QStringList& chord : qdbus_cast<QList<QStringList>>(shortcut))
                keys << chord.join(u'+');
            text += QStringLiteral(" [") + keys.join(u' ') + u']';
        }
        if (!properties.value(QStringLiteral("enabled"), true).toBool())
            text += QStringLiteral(" (disabled)");
        return text;
    }
};

// An item's menu: where it is served and its visible top-level rows in order.
struct TrayMenu {
    QString item;
    QString path;
    QList<TrayMenuRow> rows;
    QStringList texts() const {
        QStringList texts;
        for (const TrayMenuRow& row : rows)
            texts << row.text();
        return texts;
    }
};

// The menu of the item that registered as `item`, read as a host reads it: the item's Menu
// property names the menu's object.
inline TrayMenu readTrayMenu(const QDBusConnection& bus, const QString& item) {
    TrayMenu result{item, {}, {}};
    QDBusMessage ask = QDBusMessage::createMethodCall(
        item, QStringLiteral("/StatusNotifierItem"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    ask << QStringLiteral("org.kde.StatusNotifierItem") << QStringLiteral("Menu");
    const QDBusMessage menuPath = await(bus, ask);
    if (menuPath.arguments().isEmpty())
        return result;
    const QString path = result.path =
        qdbus_cast<QDBusObjectPath>(
            menuPath.arguments().constFirst().value<QDBusVariant>().variant())
            .path();

    // The top-level rows with all their properties, as a host asks for them.
    QDBusMessage layout = QDBusMessage::createMethodCall(
        item, path, QStringLiteral("com.canonical.dbusmenu"), QStringLiteral("GetLayout"));
    layout << 0 << 1 << QStringList();
    const QDBusMessage tree = await(bus, layout);
    if (tree.arguments().size() < 2)
        return result;
    const QDBusArgument root = tree.arguments().at(1).value<QDBusArgument>();
    int rootId = 0;
    QVariantMap rootProperties;
    root.beginStructure();
    root >> rootId >> rootProperties;
    root.beginArray();
    while (!root.atEnd()) {
        QDBusVariant child;
        root >> child;
        const QDBusArgument entry = child.variant().value<QDBusArgument>();
        TrayMenuRow row;
        entry.beginStructure();
        entry >> row.id >> row.properties;
        entry.endStructure();
        if (row.properties.value(QStringLiteral("visible"), true).toBool())
            result.rows << row;
    }
    root.endArray();
    root.endStructure();
    return result;
}

// Chooses a row as a host does when the user clicks it.
inline void clickTrayMenuRow(const QDBusConnection& bus, const TrayMenu& menu, int id) {
    QDBusMessage event = QDBusMessage::createMethodCall(
        menu.item, menu.path, QStringLiteral("com.canonical.dbusmenu"), QStringLiteral("Event"));
    event << id << QStringLiteral("clicked") << QVariant::fromValue(QDBusVariant(0)) << 0u;
    await(bus, event);
}

} // namespace MirlTest
