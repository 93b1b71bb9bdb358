#include "panel/logic/Spring.h"

#include <QTest>

using namespace MirlPlayer;

Q_DECLARE_METATYPE(MirlPlayer::Spring)

class tst_Spring : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startsAtRestAndSettlesOnTheTarget_data() {
        QTest::addColumn<double>("response");
        QTest::addColumn<double>("damping");
        QTest::newRow("move") << 0.42 << 1.0;
        QTest::newRow("size change") << 0.4 << 0.82;
        QTest::newRow("library") << 0.21 << 0.9;
    }
    void startsAtRestAndSettlesOnTheTarget() {
        QFETCH(double, response);
        QFETCH(double, damping);
        const Spring s{response, damping, 0};
        QCOMPARE(s.progress(0), 0.0);
        QCOMPARE(s.progress(s.settlingTime()), 1.0);
        const double justBefore = s.progress(s.settlingTime() * 0.999);
        QVERIFY(std::abs(justBefore - 1.0) < 1e-3); // no jump at the end
        QVERIFY(s.progress(response / 4) > 0.1);
    }

    void onlyAnUnderdampedSpringOvershoots() {
        const Spring critical{0.42, 1.0, 0};
        const Spring bouncy{0.4, 0.82, 0};
        double criticalMax = 0, bouncyMax = 0;
        for (double t = 0; t < 2; t += 0.001) {
            criticalMax = std::max(criticalMax, critical.progress(t));
            bouncyMax = std::max(bouncyMax, bouncy.progress(t));
        }
        QVERIFY(criticalMax <= 1.0);
        QVERIFY(bouncyMax > 1.005);
    }

    void aFasterSpringArrivesSooner() {
        const Spring normal{0.42, 1.0, 0};
        const Spring fast{0.21, 1.0, 0};
        QVERIFY(fast.settlingTime() < normal.settlingTime());
        QVERIFY(fast.progress(0.1) > normal.progress(0.1));
    }

    void anInterruptedMotionTurnsWithoutAKink_data() {
        QTest::addColumn<Spring>("first");
        QTest::addColumn<Spring>("second");
        QTest::newRow("bouncy, then firm") << Spring{0.4, 0.82, 0} << Spring{0.42, 1, 0};
        QTest::newRow("firm, then bouncy") << Spring{0.42, 1, 0} << Spring{0.4, 0.82, 0};
        QTest::newRow("with a blend") << Spring{0.4, 0.82, 0} << Spring{0.3, 1, 0.2};
    }
    void anInterruptedMotionTurnsWithoutAKink() {
        QFETCH(Spring, first);
        QFETCH(Spring, second);
        SpringAxis axis(0);
        axis.retarget(100, first, 0);
        const double t = 0.08;
        const double value = axis.value(t);
        const double speed = axis.velocity(t);
        QVERIFY(speed > 100); // well under way
        axis.retarget(-50, second, t);
        QCOMPARE(axis.value(t), value);
        QCOMPARE(axis.velocity(t), speed);
        // The speed is the slope of the path, just before and just after the turn.
        const double h = 1e-5;
        QVERIFY(std::abs((axis.value(t + h) - value) / h - speed) < 0.01 * std::abs(speed));
        for (double u : {0.05, 0.15, 0.3}) {
            const double slope = (axis.value(t + u + h) - axis.value(t + u - h)) / (2 * h);
            QVERIFY2(std::abs(slope - axis.velocity(t + u)) < 0.5, qPrintable(QString::number(u)));
        }
        QVERIFY(!axis.settled(t + 0.1));
        QVERIFY(axis.settled(t + 10));
        QCOMPARE(axis.value(t + 10), -50.0);
    }
};

QTEST_GUILESS_MAIN(tst_Spring)
#include "tst_Spring.moc"
