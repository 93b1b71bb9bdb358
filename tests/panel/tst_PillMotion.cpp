#include "panel/logic/PillMotion.h"

#include <QSignalSpy>
#include <QTest>

using namespace MirlPlayer;

class tst_PillMotion : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void followsTheLayoutWithItsSpringAndThenStops() {
        ManualClock clock;
        NotchLayout layout;
        layout.setPlacement(756, 38, false, NotchLayout::collapsedPill, std::nullopt);
        PillMotion motion(layout, clock);
        QCOMPARE(motion.centerX(), 756.0);
        QVERIFY(!motion.moving());

        const Spring spring{0.42, 1, 0};
        layout.setPlacement(1435, 4, false, NotchLayout::collapsedPill, spring);
        QVERIFY(motion.moving());
        QCOMPARE(motion.centerX(), 756.0);
        clock.advance(0.1);
        motion.advance();
        const double expected = 756 + (1435 - 756) * spring.progress(0.1);
        QCOMPARE(motion.centerX(), expected);
        QVERIFY(motion.top() < 38 && motion.top() > 4);
        clock.advance(spring.settlingTime());
        motion.advance();
        QCOMPARE(motion.centerX(), 1435.0);
        QCOMPARE(motion.top(), 4.0);
        QVERIFY(!motion.moving()); // no timer while nothing moves
    }

    void aMotionThatReplacesARunningOneKeepsItsSpeed() {
        ManualClock clock;
        NotchLayout layout;
        PillMotion motion(layout, clock);
        const Spring spring{0.4, 1, 0};
        layout.setPlacement(100, 0, false, NotchLayout::collapsedPill, spring);
        const double dt = 1e-4;
        clock.advance(0.08);
        motion.advance();
        const double before = motion.centerX();
        clock.advance(dt);
        motion.advance();
        const double speed = (motion.centerX() - before) / dt;
        QVERIFY(speed > 100);
        const double drawn = motion.centerX();
        layout.setPlacement(400, 0, false, NotchLayout::collapsedPill, spring);
        const double start = motion.centerX();
        QCOMPARE(start, drawn); // no jump
        clock.advance(dt);
        motion.advance();
        QVERIFY2(std::abs((motion.centerX() - start) / dt - speed) < 0.01 * speed,
                 qPrintable(QString::number((motion.centerX() - start) / dt)));
        clock.advance(spring.settlingTime());
        motion.advance();
        QCOMPARE(motion.centerX(), 400.0);
        QVERIFY(!motion.moving());
    }
    void withoutAMotionItJumps() {
        ManualClock clock;
        NotchLayout layout;
        PillMotion motion(layout, clock);
        QSignalSpy changed(&motion, &PillMotion::changed);
        layout.setPlacement(756, 38, true, NotchLayout::libraryPill, std::nullopt);
        QCOMPARE(motion.width(), 640.0);
        QCOMPARE(motion.height(), 460.0);
        QVERIFY(!motion.moving());
        QVERIFY(changed.count() >= 1);
    }
};

QTEST_GUILESS_MAIN(tst_PillMotion)
#include "tst_PillMotion.moc"
