// Wake from sleep as logind announces it, on a private bus standing in for the system bus.
#include "platform/linux/logind/LogindSleepWatch.h"
#include "support/TestEnv.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTest>

using namespace MirlPlayer;

namespace {

void announce(QDBusConnection& bus, bool sleeping) {
    QDBusMessage signal = QDBusMessage::createSignal(
        QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.login1.Manager"),
        QStringLiteral("PrepareForSleep"));
    signal << sleeping;
    bus.send(signal);
}

} // namespace

class tst_LogindSleepWatch : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(MirlTest::useTestEnv(), "no private test environment"); }

    void wakeIsToldAfterResumeOnlyWhileObserved() {
        QDBusConnection logind =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("logind"));
        QVERIFY(logind.registerService(QStringLiteral("org.freedesktop.login1")));
        LogindSleepWatch watch(
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("watch")));
        // A second watch shows when a signal has arrived, also when the first must ignore it.
        LogindSleepWatch sentinel(
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("sentinel")));
        int woke = 0;
        int seen = 0;
        watch.observe([&] { ++woke; });
        watch.observe([&] { woke += 10; }); // replaces the first handler, subscribes once
        sentinel.observe([&] { ++seen; });
        QVERIFY(watch.isObserving());

        announce(logind, true); // going to sleep: nothing to do yet
        announce(logind, false);
        QTRY_COMPARE(seen, 1);
        QCOMPARE(woke, 10);

        watch.stopObserving();
        QVERIFY(!watch.isObserving());
        announce(logind, false);
        QTRY_COMPARE(seen, 2);
        QCOMPARE(woke, 10);
        logind.unregisterService(QStringLiteral("org.freedesktop.login1"));
    }

    void withoutABusNothingIsObserved() {
        LogindSleepWatch watch(QDBusConnection(QStringLiteral("no such connection")));
        watch.observe([] {});
        QVERIFY(!watch.isObserving());
    }
};

QTEST_GUILESS_MAIN(tst_LogindSleepWatch)
#include "tst_LogindSleepWatch.moc"
