#include "PanelFakes.h"
#include "panel/logic/PanelGeometry.h"

#include <QSignalSpy>
#include <QTest>

using namespace MirlPlayer;
using namespace MirlPlayer::PanelGeometry;
using MirlPlayer::Test::plainScreen;

namespace {

ScreenDescription notchedScreen(double leftAux, double rightAux, double inset = 37) {
    ScreenDescription s = plainScreen(QRectF(0, 0, 1512, 982));
    s.name = QStringLiteral("notched");
    s.safeAreaTop = inset;
    s.auxiliaryTopLeftArea = QRectF(0, 982 - inset, leftAux, inset);
    s.auxiliaryTopRightArea = QRectF(1512 - rightAux, 982 - inset, rightAux, inset);
    return s;
}

Context plainContext() {
    Context c;
    c.screen = plainScreen();
    return c;
}

} // namespace

class tst_NotchLayout : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void measuresTheNotchOrFallsBack_data() {
        QTest::addColumn<ScreenDescription>("screen");
        QTest::addColumn<QSizeF>("expected");
        QTest::newRow("no housing") << plainScreen() << QSizeF(220, 32);
        QTest::newRow("housing 80 wide takes the fallback")
            << notchedScreen(716, 716) << QSizeF(220, 32);
        QTest::newRow("housing 80.5 wide is taken as measured")
            << notchedScreen(716, 715.5) << QSizeF(80.5, 37);
        QTest::newRow("ordinary housing") << notchedScreen(650, 650) << QSizeF(212, 37);
        ScreenDescription noAreas = notchedScreen(0, 0);
        noAreas.auxiliaryTopLeftArea.reset();
        noAreas.auxiliaryTopRightArea.reset();
        QTest::newRow("missing side areas count as zero") << noAreas << QSizeF(1512, 37);
    }
    void measuresTheNotchOrFallsBack() {
        QFETCH(ScreenDescription, screen);
        QFETCH(QSizeF, expected);
        QCOMPARE(measureNotch(screen), expected);
    }

    void choosesTheNotchedScreenOverTheMainOne() {
        ScreenDescription external = plainScreen(QRectF(-1920, 0, 1920, 1080));
        external.name = QStringLiteral("external");
        const ScreenDescription laptop = notchedScreen(650, 650);
        QCOMPARE(targetScreen({external, laptop}, external)->name, QStringLiteral("notched"));
        QCOMPARE(targetScreen({external}, external)->name, QStringLiteral("external"));
        QVERIFY(!targetScreen({}, std::nullopt));
    }

    void placesThePillPerStageAndPosition_data() {
        QTest::addColumn<int>("stage");
        QTest::addColumn<bool>("fullscreen");
        QTest::addColumn<bool>("right");
        QTest::addColumn<double>("centerX");
        QTest::addColumn<double>("top");
        QTest::addColumn<bool>("expanded");
        // 1512 wide: corner = 1512 - 44 - 33; right rest = 1512 - 12 - 33; right card 1512-12-290.
        QTest::newRow("rest under the notch") << 0 << false << false << 756.0 << 38.0 << false;
        QTest::newRow("rest at the right") << 0 << false << true << 1467.0 << 38.0 << false;
        QTest::newRow("full-screen rest goes to the corner at notch")
            << 0 << true << false << 1435.0 << 4.0 << false;
        QTest::newRow("full-screen rest goes to the corner at right")
            << 0 << true << true << 1435.0 << 4.0 << false;
        QTest::newRow("peek uses the ordinary place even in full screen")
            << 1 << true << false << 756.0 << 38.0 << false;
        QTest::newRow("open under the notch") << 2 << false << false << 756.0 << 38.0 << true;
        QTest::newRow("open at the right keeps the card on screen")
            << 2 << false << true << 1210.0 << 38.0 << true;
    }
    void placesThePillPerStageAndPosition() {
        QFETCH(int, stage);
        QFETCH(bool, fullscreen);
        QFETCH(bool, right);
        QFETCH(double, centerX);
        QFETCH(double, top);
        QFETCH(bool, expanded);
        Context c = plainContext();
        c.fullscreenActive = fullscreen;
        c.position = right ? PillPosition::right : PillPosition::notch;
        const Placement p = pillPlacement(Stage(stage), c);
        QCOMPARE(p.centerX, centerX);
        QCOMPARE(p.top, top);
        QCOMPARE(p.expanded, expanded);
    }

    void fullScreenTriggerStaysUnderTheNotchAtPositionNotch() {
        Context c = plainContext();
        c.fullscreenActive = true;
        const QRectF trigger = triggerRect(c);
        QCOMPARE(trigger, QRectF(756 - 110, 982 - 40, 220, 40));
        // The resting pill itself is in the corner, outside that strip.
        const QRectF pill = rectFor(c, pillPlacement(Stage::rest, c), NotchLayout::collapsedPill);
        QVERIFY(!trigger.intersects(pill));

        c.position = PillPosition::right;
        QCOMPARE(triggerRect(c), QRectF(1435 - 73, 982 - 40, 146, 40));
        c.notchSize = QSizeF(150, 32);
        c.position = PillPosition::notch;
        QCOMPARE(triggerRect(c).width(), 200.0);
    }

    void pointerRectanglesAroundTheRestingPillAndTheCard() {
        Context c = plainContext();
        QCOMPARE(triggerRect(c), QRectF(709, 906, 94, 52));
        QCOMPARE(pillRect(c), QRectF(603, 810, 306, 244));
        // Visualizer card 580 x 168 under the notch: left 466, bottom 776.
        QCOMPARE(holdRect(c), QRectF(454, 764, 604, 230));
        QVERIFY(topEdge(holdRect(c)) > 982); // reaches beyond the top of the screen
        QCOMPARE(hitRegion(c), QRectF(460, 770, 592, 180));
        c.libraryOpen = true;
        QCOMPARE(hitRegion(c).size(), QSizeF(652, 472));
        c.libraryOpen = false;
        c.showVisualizer = false;
        QCOMPARE(hitRegion(c).size(), QSizeF(260, 348));
    }

    void dodgingMovesThePillOnlyLeftAndNeverOffScreen_data() {
        QTest::addColumn<double>("screenWidth");
        QTest::addColumn<int>("stage");
        QTest::addColumn<double>("leftEdge");
        QTest::addColumn<double>("expected");
        QTest::newRow("edge far right leaves the pill in place") << 1512.0 << 0 << 1400.0 << 756.0;
        QTest::newRow("edge over the pill moves it left of the edge")
            << 1512.0 << 0 << 740.0 << 740.0 - 12 - 33;
        QTest::newRow("an open card keeps clear with its own width")
            << 1512.0 << 2 << 900.0 << 900.0 - 12 - 290;
        QTest::newRow("a very narrow screen pins the pill 8 from the left")
            << 200.0 << 0 << 20.0 << 33.0 + 8;
    }
    void dodgingMovesThePillOnlyLeftAndNeverOffScreen() {
        QFETCH(double, screenWidth);
        QFETCH(int, stage);
        QFETCH(double, leftEdge);
        QFETCH(double, expected);
        Context c = plainContext();
        c.screen = plainScreen(QRectF(0, 0, screenWidth, 982));
        const Placement p = pillPlacement(Stage(stage), c);
        QCOMPARE(dodgeCorrectedCenterX(p, c, leftEdge), expected);
    }

    void displayRectMeasuresFromTheDesktopsTop() {
        const ScreenDescription primary = plainScreen(QRectF(0, 0, 1512, 982));
        const ScreenDescription above = plainScreen(QRectF(0, 982, 1920, 1080));
        QCOMPARE(displayRect(above, {primary, above}), QRectF(0, 0, 1920, 1080));
        QCOMPARE(displayRect(primary, {primary, above}), QRectF(0, 1080, 1512, 982));
        QCOMPARE(displayRect(above, {}), QRectF(0, 0, 1920, 1080));
    }
};

QTEST_GUILESS_MAIN(tst_NotchLayout)
#include "tst_NotchLayout.moc"
