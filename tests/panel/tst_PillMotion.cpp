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

    void aNewTargetStartsFromWhereThePillIsDrawn() {
        ManualClock clock;
        NotchLayout layout;
        PillMotion motion(layout, clock);
        layout.setPlacement(100, 0, false, NotchLayout::collapsedPill, Spring{0.4, 1, 0});
        clock.advance(0.1);
        motion.advance();
        const double midway = motion.centerX();
        QVERIFY(midway > 0 && midway < 100);
        layout.setPlacement(0, 0, false, NotchLayout::collapsedPill, Spring{0.4, 1, 0});
        QCOMPARE(motion.centerX(), midway); // no jump
        clock.advance(5);
        motion.advance();
        QCOMPARE(motion.centerX(), 0.0);
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
