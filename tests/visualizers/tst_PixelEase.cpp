#include "visualizers/views/PixelEase.h"

#include <QTest>
#include <cmath>

using namespace MirlPlayer;

class tst_PixelEase : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Between targets the ease wakes once, at its end, and rests there on the target; a move
    // smaller than a step wakes nothing.
    void wakesOnlyToRestOnTheTarget_data() {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addColumn<double>("step");
        QTest::addColumn<bool>("wakes");
        QTest::newRow("up whole pixels") << 3.0 << 11.0 << 1.0 << true;
        QTest::newRow("down half pixels") << 5.0 << 3.0 << 0.5 << true;
        QTest::newRow("from a fraction") << 3.3 << 6.8 << 1.0 << true;
        QTest::newRow("less than a step") << 5.0 << 5.3 << 1.0 << false;
    }
    void wakesOnlyToRestOnTheTarget() {
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(double, step);
        QFETCH(bool, wakes);
        ManualClock clock(10.0);
        PixelEase ease;
        ease.setClock(clock);
        ease.setStep(step);
        ease.setTarget(from);
        QCOMPARE(ease.value(), std::round(from / step) * step);
        ease.setTarget(to);
        QCOMPARE(ease.moving(), wakes);
        if (wakes) {
            QCOMPARE(ease.nextChangeAt(), 10.1);
            clock.set(ease.nextChangeAt());
            ease.poll();
        }
        QVERIFY(!ease.moving());
        QCOMPARE(ease.value(), std::round(to / step) * step);
    }

    // A new target part-way eases on from where the meter stands, not from the old target.
    void aNewTargetContinuesFromWhereTheEaseIs() {
        ManualClock clock(0.0);
        PixelEase ease;
        ease.setClock(clock);
        ease.setTarget(0);
        ease.setTarget(10);
        clock.set(0.05); // three quarters of the way
        ease.poll();
        QCOMPARE(ease.value(), 8.0);
        ease.setTarget(0);
        QCOMPARE(ease.value(), 8.0);
        clock.set(0.2);
        ease.poll();
        QCOMPARE(ease.value(), 0.0);
        QVERIFY(!ease.moving());
    }
};

QTEST_GUILESS_MAIN(tst_PixelEase)
#include "tst_PixelEase.moc"
