#include "visualizers/views/PixelEase.h"

#include <QTest>
#include <cmath>

using namespace MirlPlayer;

class tst_PixelEase : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Woken at each scheduled moment, the ease shows every step on the way once, in order, and
    // rests on the target within the duration; a move smaller than a step wakes nothing.
    void wakesOncePerStepOnTheWay_data() {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addColumn<double>("step");
        QTest::addColumn<int>("wakes");
        QTest::newRow("up whole pixels") << 3.0 << 11.0 << 1.0 << 8;
        QTest::newRow("down whole pixels") << 11.0 << 3.0 << 1.0 << 8;
        QTest::newRow("half pixels at twice the density") << 3.0 << 5.0 << 0.5 << 4;
        QTest::newRow("from a fraction") << 3.3 << 6.8 << 1.0 << 4;
        QTest::newRow("less than a step") << 5.0 << 5.3 << 1.0 << 0;
    }
    void wakesOncePerStepOnTheWay() {
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(double, step);
        QFETCH(int, wakes);
        ManualClock clock(10.0);
        PixelEase ease;
        ease.setClock(clock);
        ease.setStep(step);
        ease.setTarget(from);
        const double start = std::round(from / step) * step;
        QCOMPARE(ease.value(), start);
        ease.setTarget(to);
        const double direction = to > from ? 1 : -1;
        double shown = ease.value();
        int woken = 0;
        while (ease.moving() && woken < 100) {
            QVERIFY(ease.nextChangeAt() >= clock.now());
            clock.set(ease.nextChangeAt() + 1e-9);
            ease.poll();
            ++woken;
            if (ease.value() != shown) {
                QVERIFY(std::abs(ease.value() - shown - direction * step) < 1e-9);
                shown = ease.value();
            }
        }
        QVERIFY(clock.now() <= 10.0 + 0.1 + 1e-6);
        QCOMPARE(woken, wakes);
        QVERIFY(std::abs(ease.value() - std::round(to / step) * step) < 1e-9);
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
