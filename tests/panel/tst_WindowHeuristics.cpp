#include "PanelFakes.h"
#include "panel/logic/WindowHeuristics.h"

#include <QTest>

using namespace MirlPlayer;
using namespace MirlPlayer::WindowHeuristics;
using MirlPlayer::Test::window;

namespace {
const QRectF display(0, 0, 1512, 982);
constexpr qint64 ownPid = 4242;
// The resting pill under the notch of a 1512-wide screen.
constexpr double pillLeft = 723, pillRight = 789;

std::optional<Blocker> blockerIn(const WindowList& list, double left = pillLeft,
                                 double right = pillRight) {
    return findBlocker(list, display, left, right, 1512, 1512, ownPid);
}
} // namespace

class tst_WindowHeuristics : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void overviewNeedsAVisibleDockWindowCoveringTheDisplay_data() {
        QTest::addColumn<WindowRecord>("record");
        QTest::addColumn<bool>("expected");
        QTest::newRow("covering") << window("Dock", 18, display) << true;
        QTest::newRow("short by 1 point, saved by the 2-point growth")
            << window("Dock", 18, QRectF(1, 1, 1510, 980)) << true;
        QTest::newRow("short by 3 points") << window("Dock", 18, QRectF(3, 0, 1509, 982)) << false;
        QTest::newRow("transparent") << window("Dock", 18, display, 100, 0.0) << false;
        QTest::newRow("alpha missing counts as visible")
            << window("Dock", 18, display, 100, std::nullopt) << true;
        QTest::newRow("another layer") << window("Dock", 20, display) << false;
        QTest::newRow("another owner") << window("Finder", 18, display) << false;
        WindowRecord noBounds = window("Dock", 18, display);
        noBounds.bounds->height.reset();
        QTest::newRow("bounds that do not parse") << noBounds << false;
    }
    void overviewNeedsAVisibleDockWindowCoveringTheDisplay() {
        QFETCH(WindowRecord, record);
        QFETCH(bool, expected);
        QCOMPARE(overviewVisible({record}, display), expected);
        QVERIFY(!overviewVisible({record}, QRectF()));
    }

    void menuBarHiddenByAFullScreenApp_data() {
        QTest::addColumn<WindowList>("windows");
        QTest::addColumn<bool>("expected");
        const WindowRecord video = window("mpv", 0, QRectF(0, 49, 1512, 933));
        const WindowRecord menuBar = window("Window Server", 25, QRectF(0, 0, 1512, 24), 1);
        QTest::newRow("video below the top 5 %") << WindowList{video} << true;
        QTest::newRow("with the menu bar visible") << WindowList{menuBar, video} << false;
        QTest::newRow("a top panel on another display does not count")
            << WindowList{window("panel", 25, QRectF(0, -1080, 1920, 24), 1), video} << true;
        QTest::newRow("starting lower than the slack")
            << WindowList{window("mpv", 0, QRectF(0, 62, 1512, 920))} << false;
        QTest::newRow("Dock at layer 20 covering the display")
            << WindowList{window("Dock", 20, display, 2), video} << false;
        QTest::newRow("two windows of one app together cover it")
            << WindowList{window("app", 0, QRectF(0, 0, 800, 982), 7),
                          window("app", 3, QRectF(790, 0, 722, 982), 7)}
            << true;
        QTest::newRow("two apps halves do not")
            << WindowList{window("a", 0, QRectF(0, 0, 800, 982), 7),
                          window("b", 0, QRectF(790, 0, 722, 982), 8)}
            << false;
        QTest::newRow("own windows are ignored")
            << WindowList{window("me", 0, display, ownPid)} << false;
        QTest::newRow("window server surfaces are ignored")
            << WindowList{window("Window Server", 0, display, 1)} << false;
        QTest::newRow("transparent cover") << WindowList{window("x", 0, display, 9, 0.0)} << false;
        WindowRecord noPid = video;
        noPid.pid.reset();
        QTest::newRow("cover without a process") << WindowList{noPid} << false;
        WindowRecord noOwner = video;
        noOwner.owner.reset();
        QTest::newRow("cover without an owner") << WindowList{noOwner} << false;
        QTest::newRow("nothing at all") << WindowList{} << false;
    }
    void menuBarHiddenByAFullScreenApp() {
        QFETCH(WindowList, windows);
        QFETCH(bool, expected);
        QCOMPARE(menuBarHidden(windows, display, ownPid), expected);
    }

    void blockersStandOverTheRestingPill_data() {
        QTest::addColumn<WindowList>("windows");
        QTest::addColumn<bool>("blocks");
        QTest::addColumn<double>("leftEdge");
        QTest::addColumn<QString>("owner");
        QTest::newRow("popup menu over the pill")
            << WindowList{window("menu", 101, QRectF(700, 24, 200, 300))} << true << 700.0
            << "menu";
        QTest::newRow("89 points wide")
            << WindowList{window("menu", 101, QRectF(700, 24, 89, 300))} << false << 0.0 << "";
        QTest::newRow("wider than 55 % of the screen")
            << WindowList{window("menu", 101, QRectF(100, 24, 832, 300))} << false << 0.0 << "";
        QTest::newRow("shorter than 120")
            << WindowList{window("menu", 101, QRectF(700, 24, 200, 119))} << false << 0.0 << "";
        QTest::newRow("lower than 50 below the top")
            << WindowList{window("menu", 101, QRectF(700, 51, 200, 300))} << false << 0.0 << "";
        QTest::newRow("beside the pill")
            << WindowList{window("menu", 101, QRectF(789, 24, 200, 300))} << false << 0.0 << "";
        QTest::newRow("ordinary window layer")
            << WindowList{window("editor", 19, QRectF(700, 24, 200, 300))} << false << 0.0 << "";
        QTest::newRow("own popup")
            << WindowList{window("me", 101, QRectF(700, 24, 200, 300), ownPid)} << false << 0.0
            << "";
        QTest::newRow("the leftmost of two wins, the owner is the last found")
            << WindowList{window("a", 101, QRectF(650, 24, 200, 300)),
                          window("b", 101, QRectF(720, 24, 200, 300))}
            << true << 650.0 << "b";
        QTest::newRow("notification panel far from a centred pill")
            << WindowList{window("NotificationCenter", 23, QRectF(1112, 0, 400, 982))} << false
            << 0.0 << "";
    }
    void blockersStandOverTheRestingPill() {
        QFETCH(WindowList, windows);
        QFETCH(bool, blocks);
        QFETCH(double, leftEdge);
        QFETCH(QString, owner);
        const auto b = blockerIn(windows);
        QCOMPARE(b.has_value(), blocks);
        if (b) {
            QCOMPARE(b->leftEdge, leftEdge);
            QCOMPARE(b->owner, owner);
        }
    }

    void notificationPanelBlocksAPillNearTheRightEdge() {
        // A pill at the right: 1434..1500.
        const WindowRecord tall = window("NotificationCenter", 23, QRectF(0, 0, 10, 200));
        const auto b = blockerIn({tall}, 1434, 1500);
        QVERIFY(b);
        QCOMPARE(b->leftEdge, 1112.0);
        QCOMPARE(b->owner, QStringLiteral("Notification Centre"));
        // Below 200 it is an ordinary window, found only where it overlaps.
        const WindowRecord shortAway = window("Notification Centre", 23, QRectF(0, 0, 300, 199));
        QVERIFY(!blockerIn({shortAway}, 1434, 1500));
        const WindowRecord shortOver = window("Notification Centre", 23, QRectF(1300, 0, 300, 199));
        QCOMPARE(blockerIn({shortOver}, 1434, 1500)->leftEdge, 1300.0);
    }

    void digestListsFloatingWindowsThenTheTallestOrdinaryOnes() {
        const WindowList list{
            window("b", 0, QRectF(0, 0, 10, 100)), window("menu", 101, QRectF(1, 2, 3, 4)),
            window("c", 0, QRectF(0, 0, 10, 300)), window("bar", 25, QRectF(0, 0, 1512, 24)),
            window("d", 0, QRectF(0, 0, 10, 200)), window("e", 0, QRectF(0, 0, 10, 50)),
            window("f", 5, QRectF(0, 0, 10, 900))};
        WindowRecord anonymous = window("x", 20, QRectF(0, 0, 1, 1));
        anonymous.owner.reset();
        WindowList withAnonymous = list;
        withAnonymous.append(anonymous);
        QCOMPARE(windowDigest(withAnonymous),
                 QStringLiteral("[? L20 0,0 1x1] [bar L25 0,0 1512x24] [menu L101 1,2 3x4] "
                                "[c L0 0,0 10x300] [d L0 0,0 10x200] [b L0 0,0 10x100]"));
        QCOMPARE(windowDigest(std::nullopt), QStringLiteral("nil"));
    }
};

QTEST_GUILESS_MAIN(tst_WindowHeuristics)
#include "tst_WindowHeuristics.moc"
