// The window list of a real X server, as the placement heuristics read it.
#include "X11TestMain.h"
#include "panel/logic/WindowHeuristics.h"
#include "platform/linux/x11/X11ChangeWatch.h"
#include "platform/linux/x11/X11WindowFacts.h"

#include <QGuiApplication>
#include <QTest>

using namespace MirlPlayer;
using MirlPlayer::Test::ForeignWindow;
using MirlPlayer::Test::RootProperty;

namespace {
std::optional<WindowRecord> foreign(WindowFacts& facts) {
    const auto list = facts.onScreenWindows();
    if (!list)
        return std::nullopt;
    for (const auto& r : *list) {
        if (r.pid == 99999)
            return r;
    }
    return std::nullopt;
}
// Counts the reads that reach the X server.
struct CountedFacts : X11WindowFacts {
    int reads = 0;
    std::optional<WindowList> onScreenWindows() override {
        ++reads;
        return X11WindowFacts::onScreenWindows();
    }
};
} // namespace

class tst_X11WindowFacts : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void mapsWindowKindsToLayers_data() {
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<bool>("overrideRedirect");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<int>("layer");
        QTest::newRow("ordinary window") << QRect(10, 40, 300, 200) << false << QByteArray() << 0;
        QTest::newRow("dialog") << QRect(10, 40, 300, 200) << false
                                << QByteArray("_NET_WM_WINDOW_TYPE_DIALOG") << 0;
        QTest::newRow("top panel stands where the menu bar is")
            << QRect(0, 0, 1512, 28) << false << QByteArray("_NET_WM_WINDOW_TYPE_DOCK") << 25;
        QTest::newRow("bottom dock")
            << QRect(300, 930, 900, 52) << false << QByteArray("_NET_WM_WINDOW_TYPE_DOCK") << 20;
        QTest::newRow("notification") << QRect(1100, 30, 400, 120) << false
                                      << QByteArray("_NET_WM_WINDOW_TYPE_NOTIFICATION") << 23;
        QTest::newRow("popup menu") << QRect(700, 24, 200, 300) << true
                                    << QByteArray("_NET_WM_WINDOW_TYPE_POPUP_MENU") << 101;
        QTest::newRow("dropdown menu of a managed window")
            << QRect(700, 24, 200, 300) << false << QByteArray("_NET_WM_WINDOW_TYPE_DROPDOWN_MENU")
            << 101;
        QTest::newRow("unmanaged window of no type")
            << QRect(700, 24, 200, 300) << true << QByteArray() << 101;
    }
    void mapsWindowKindsToLayers() {
        QFETCH(QRect, geometry);
        QFETCH(bool, overrideRedirect);
        QFETCH(QByteArray, type);
        QFETCH(int, layer);
        X11WindowFacts facts;
        ForeignWindow w(geometry, ForeignWindow::Options::ofType(type, overrideRedirect));
        const auto r = foreign(facts);
        QVERIFY(r);
        QCOMPARE(r->layer, std::optional<int>(layer));
        QCOMPARE(r->owner, std::optional<QString>(QStringLiteral("Foreign")));
        QCOMPARE(r->bounds->rect(), std::optional<QRectF>(QRectF(geometry)));
        QVERIFY(!r->alpha);
    }

    void leavesOutDesktopsAndMinimisedWindows() {
        X11WindowFacts facts;
        {
            ForeignWindow desktop(QRect(0, 0, 1512, 982),
                                  ForeignWindow::Options::ofType("_NET_WM_WINDOW_TYPE_DESKTOP"));
            QVERIFY(!foreign(facts));
        }
        {
            ForeignWindow hidden(QRect(0, 0, 100, 100),
                                 ForeignWindow::Options::inState("_NET_WM_STATE_HIDDEN"));
            QVERIFY(!foreign(facts));
        }
        QVERIFY(!foreign(facts)); // and gone windows are gone
    }

    void readsOpacityAsAlpha() {
        X11WindowFacts facts;
        ForeignWindow::Options transparent;
        transparent.opacity = 0;
        ForeignWindow clear(QRect(0, 0, 100, 100), transparent);
        QCOMPARE(foreign(facts)->alpha, std::optional<double>(0.0));
    }

    void ownWindowsCarryOwnPid() {
        X11WindowFacts facts;
        QWindow own;
        own.setGeometry(0, 0, 50, 50);
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        const auto list = facts.onScreenWindows();
        QVERIFY(list);
        QVERIFY(std::any_of(list->begin(), list->end(),
                            [&](const WindowRecord& r) { return r.pid == facts.ownPid(); }));
    }

    // The window manager's part is played by hand: it announces full-screen marks, keeps its
    // bar's rows out of the work area, and the panel window stays mapped beneath a full-screen one.
    void fullScreenIsWhatTheManagerSays_data() {
        QTest::addColumn<bool>("topPanel");
        QTest::addColumn<QByteArray>("state");
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<bool>("barInWorkArea");
        QTest::addColumn<bool>("hidden");
        QTest::newRow("full-screen over a top panel that stays mapped")
            << true << QByteArray("_NET_WM_STATE_FULLSCREEN") << QRect(0, 0, 1512, 982) << false
            << true;
        QTest::newRow("maximised below a top panel")
            << true << QByteArray("_NET_WM_STATE_MAXIMIZED_VERT") << QRect(0, 28, 1512, 954)
            << false << false;
        QTest::newRow("maximised under a bar the manager draws")
            << false << QByteArray("_NET_WM_STATE_MAXIMIZED_VERT") << QRect(0, 32, 1512, 950)
            << true << false;
        QTest::newRow("full-screen where the manager draws the bar")
            << false << QByteArray("_NET_WM_STATE_FULLSCREEN") << QRect(0, 0, 1512, 982) << true
            << true;
    }
    void fullScreenIsWhatTheManagerSays() {
        QFETCH(bool, topPanel);
        QFETCH(QByteArray, state);
        QFETCH(QRect, geometry);
        QFETCH(bool, barInWorkArea);
        QFETCH(bool, hidden);
        RootProperty supported("_NET_SUPPORTED", {}, {"_NET_WM_STATE_FULLSCREEN"});
        RootProperty area("_NET_WORKAREA", {0, barInWorkArea ? 32 : 0, 1512, 950});
        std::optional<ForeignWindow> panel;
        if (topPanel)
            panel.emplace(QRect(0, 0, 1512, 28),
                          ForeignWindow::Options::ofType("_NET_WM_WINDOW_TYPE_DOCK"));
        ForeignWindow app(geometry, ForeignWindow::Options::inState(state));
        X11WindowFacts facts;
        const auto list = facts.onScreenWindows();
        QVERIFY(list);
        QCOMPARE(WindowHeuristics::menuBarHidden(*list, QRectF(0, 0, 1512, 982), facts.ownPid()),
                 hidden);
    }

    // The panel's tick reads the list twenty times a second: only an event of the X server may
    // send it to the server again, and every change the list shows must come with one.
    void watchedListIsReadAgainOnlyAfterAChange() {
        CountedFacts counted;
        X11ChangeWatch watch;
        counted.setNewClientHook([&](quint32 client) { watch.watchWindow(client); });
        WatchedWindowFacts watched(counted, watch);
        std::optional<ForeignWindow> w(std::in_place, QRect(10, 40, 300, 200),
                                       ForeignWindow::Options());
        QTRY_VERIFY(foreign(watched));
        QTest::qWait(200); // the events of the window's making
        foreign(watched);
        const int reads = counted.reads;
        QVERIFY(foreign(watched));
        QCOMPARE(counted.reads, reads);
        w->setOpacity(0); // a property of the window's own, which no root event announces
        QTRY_COMPARE(foreign(watched)->alpha, std::optional(0.0));
        w.reset();
        QTRY_VERIFY(!foreign(watched));
    }

    void anOverviewCoversTheWholeScreen() {
        X11WindowFacts facts;
        bool overview = false;
        facts.setOverviewSource([&] { return overview; });
        auto dock = [&] {
            const auto list = facts.onScreenWindows();
            return std::count_if(list->begin(), list->end(), [](const WindowRecord& r) {
                return r.owner == QLatin1String("Dock") && r.layer == 18 &&
                       r.bounds->rect() == QRectF(0, 0, 1512, 982);
            });
        };
        QCOMPARE(dock(), 0);
        overview = true;
        QCOMPARE(dock(), 1);
    }
};

MIRL_X11_TEST_MAIN(tst_X11WindowFacts)

#include "tst_X11WindowFacts.moc"
