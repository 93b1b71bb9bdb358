#include "panel/logic/PointerGuard.h"

#include <QTest>

using namespace MirlPlayer;

class tst_PointerGuard : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void doesNothingUntilTheFirstToggle() {
        PointerGuard guard;
        QVERIFY(!guard.anchor());
        QVERIFY(guard.passes(QPointF(0, 0)));
        QVERIFY(!guard.checking());
    }

    void itsOwnCheckEmptiesTheAnchorOnlyOnceThePointerHasTravelled() {
        PointerGuard guard;
        QPointF pointer(100, 100);
        guard.setPointerSource([&] { return pointer; });
        guard.arm(pointer);
        pointer = QPointF(130, 100); // exactly 30 away still holds
        guard.check();
        QVERIFY(guard.anchor());
        QVERIFY(guard.checking());
        pointer = QPointF(130.5, 100);
        guard.check();
        QVERIFY(!guard.anchor());
        QVERIFY(!guard.checking());
    }

    void reArmingMovesTheAnchor() {
        PointerGuard guard;
        guard.arm(QPointF(0, 0));
        guard.arm(QPointF(100, 0));
        QVERIFY(!guard.passes(QPointF(110, 0)));
        QVERIFY(guard.passes(QPointF(40, 0)));
    }

    void hoverOverArtThatWasAlreadyUnderThePointerWaitsForAnExit_data() {
        QTest::addColumn<double>("after");
        QTest::addColumn<QPointF>("pointer");
        QTest::addColumn<bool>("starts");
        QTest::newRow("too soon, far enough") << 0.7 << QPointF(50, 0) << false;
        QTest::newRow("late enough, too close") << 2.0 << QPointF(23, 0) << false;
        QTest::newRow("late enough and 24 away") << 0.8 << QPointF(24, 0) << true;
    }
    void hoverOverArtThatWasAlreadyUnderThePointerWaitsForAnExit() {
        QFETCH(double, after);
        QFETCH(QPointF, pointer);
        QFETCH(bool, starts);
        PointerGuard guard;
        HoverIntent intent = HoverIntent::appear(true, 10.0, QPointF(0, 0));
        QCOMPARE(intent.hoverMayStart(guard, 10.0 + after, pointer, false, false), starts);
        QCOMPARE(intent.waitingForExit, !starts);
    }

    void aFreshToggleBlocksHoverUntilThePointerMovesAway() {
        PointerGuard guard;
        HoverIntent intent = HoverIntent::appear(false, 0, QPointF());
        guard.arm(QPointF(5, 5));
        QVERIFY(!intent.hoverMayStart(guard, 1, QPointF(20, 5), false, false));
        QVERIFY(intent.hoverMayStart(guard, 1, QPointF(40, 5), false, false));
        QVERIFY(!guard.anchor());
    }
};

QTEST_GUILESS_MAIN(tst_PointerGuard)
#include "tst_PointerGuard.moc"
