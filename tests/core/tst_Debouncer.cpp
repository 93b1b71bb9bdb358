#include "core/Debouncer.h"

#include <QTest>

using namespace MirlPlayer;

class tst_Debouncer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void firesOnceAfterTheQuietInterval() {
        ManualClock clock;
        int fired = 0;
        Debouncer debouncer(
            0.1, [&] { ++fired; }, clock);
        debouncer.trigger();
        clock.advance(0.05);
        QVERIFY(!debouncer.poll());
        debouncer.trigger(); // a new trigger restarts the wait
        clock.advance(0.06);
        QVERIFY(!debouncer.poll());
        clock.advance(0.05);
        QVERIFY(debouncer.poll());
        QCOMPARE(fired, 1);
        clock.advance(1);
        QVERIFY(!debouncer.poll());
        QCOMPARE(fired, 1);
    }

    void cancelledTriggerNeverFires() {
        ManualClock clock;
        int fired = 0;
        Debouncer debouncer(
            0.1, [&] { ++fired; }, clock);
        debouncer.trigger();
        debouncer.cancel();
        clock.advance(1);
        QVERIFY(!debouncer.poll());
        QCOMPARE(fired, 0);
    }
};

QTEST_GUILESS_MAIN(tst_Debouncer)
#include "tst_Debouncer.moc"
