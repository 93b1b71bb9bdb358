#include "app/StatusItem.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>

using namespace MirlPlayer;

// A tray's watcher as a desktop panel offers it, reduced to what the visibility reads.
class FakeWatcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)
public:
    bool host = false;
    bool hostRegistered() const { return host; }
};

class tst_StatusItemVisibility : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void followsTheWatcherAndItsHost();
};

void tst_StatusItemVisibility::followsTheWatcherAndItsHost() {
    // A bus of the test's own, so that the desktop's tray (if any) plays no part.
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"),
                  QStringLiteral("--print-address=1")});
    QVERIFY(daemon.waitForReadyRead(5000));
    const QString address = QString::fromUtf8(daemon.readLine()).trimmed();
    QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("item"));
    QDBusConnection panel = QDBusConnection::connectToBus(address, QStringLiteral("panel"));
    QVERIFY(bus.isConnected() && panel.isConnected());

    StatusItemVisibility visibility(bus);
    QTest::qWait(200);
    QVERIFY(!visibility.visible()); // no watcher at all

    FakeWatcher watcher;
    QVERIFY(panel.registerObject(QStringLiteral("/StatusNotifierWatcher"), &watcher,
                                 QDBusConnection::ExportAllProperties));
    QVERIFY(panel.registerService(QStringLiteral("org.kde.StatusNotifierWatcher")));
    QTest::qWait(200);
    QVERIFY(!visibility.visible()); // a watcher with no host draws nothing

    watcher.host = true;
    panel.send(QDBusMessage::createSignal(QStringLiteral("/StatusNotifierWatcher"),
                                          QStringLiteral("org.kde.StatusNotifierWatcher"),
                                          QStringLiteral("StatusNotifierHostRegistered")));
    QTRY_VERIFY(visibility.visible());

    panel.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    QTRY_VERIFY(!visibility.visible());

    QDBusConnection::disconnectFromBus(QStringLiteral("item"));
    QDBusConnection::disconnectFromBus(QStringLiteral("panel"));
    daemon.kill();
    daemon.waitForFinished();
}

QTEST_MAIN(tst_StatusItemVisibility)
#include "tst_StatusItemVisibility.moc"
