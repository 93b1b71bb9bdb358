#include "panel/logic/Spring.h"

#include <QTest>

using namespace MirlPlayer;

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
};

QTEST_GUILESS_MAIN(tst_Spring)
#include "tst_Spring.moc"
