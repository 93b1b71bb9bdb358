// What the X stack and the window manager say, through the records, to the panel's answers:
// full-screen and blockers on the screen the panel lives on, for every arrangement of screens.
#include "panel/logic/PanelGeometry.h"
#include "panel/logic/WindowHeuristics.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11WindowRecords.h"

#include <QTest>

using namespace MirlPlayer;
using Kind = X11Window::Kind;
using Stack = std::vector<X11Window>;
Q_DECLARE_METATYPE(Stack)

namespace {

// The panel's screen (the primary) first; root pixels.
struct Arrangement {
    const char* name;
    QList<QRect> screens;
};
const Arrangement arrangements[] = {
    {"one screen", {QRect(0, 0, 1920, 1080)}},
    {"laptop below a taller monitor", {QRect(0, 1440, 1920, 1080), QRect(0, 0, 2560, 1440)}},
    {"laptop right of a monitor, lower", {QRect(2560, 600, 1920, 1080), QRect(0, 0, 2560, 1440)}},
};

X11Window win(QRect g, Kind kind = Kind::normal, bool fullScreen = false) {
    X11Window w;
    w.geometry = g;
    w.kind = kind;
    w.fullScreen = fullScreen;
    w.owner = QStringLiteral("app");
    w.pid = 100;
    return w;
}

X11Desktop desktopOf(const QList<QRect>& screens, bool fullScreenKnown = true) {
    X11Desktop d;
    for (const QRect& s : screens)
        d.root |= s;
    d.screens = screens;
    d.fullScreenKnown = fullScreenKnown;
    return d;
}

// The screens as the panel sees them: bottom-left points, origin at the primary's bottom left.
QList<ScreenDescription> described(const QList<QRect>& screens) {
    const ScreenFlip flip{double(screens.first().bottom() + 1)};
    QList<ScreenDescription> list;
    for (const QRect& s : screens) {
        ScreenDescription d;
        d.frame = flip.toBottomLeft(QRectF(s));
        list.append(d);
    }
    return list;
}

} // namespace

class tst_X11WindowRecords : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void fullScreenIsTheWindowManagersWord_data() {
        QTest::addColumn<QList<QRect>>("screens");
        QTest::addColumn<Stack>("stack");
        QTest::addColumn<std::optional<QRect>>("workArea");
        QTest::addColumn<bool>("fullScreenKnown");
        QTest::addColumn<bool>("hidden");
        for (const auto& a : arrangements) {
            const QRect s = a.screens.first();
            const QRect other = a.screens.last();
            X11Window panel = win(QRect(s.x(), s.y(), s.width(), 28), Kind::dock);
            const X11Window video = win(s, Kind::normal, true);
            const X11Window maximised = win(s.adjusted(0, 32, 0, 0));
            const std::optional<QRect> gnomeArea = QRect(0, 32, 1920, 1048);
            auto row = [&](const char* what) {
                return &QTest::newRow(qPrintable(QStringLiteral("%1: %2").arg(a.name, what)));
            };
            *row("full-screen above a top panel")
                << a.screens << Stack{panel, video} << std::optional<QRect>() << true << true;
            *row("maximised below a top panel")
                << a.screens << Stack{panel, maximised} << std::optional<QRect>() << true << false;
            *row("a top panel above the full-screen window")
                << a.screens << Stack{video, panel} << std::optional<QRect>() << true << false;
            *row("maximised under a bar drawn by the manager")
                << a.screens << Stack{maximised} << gnomeArea << true << false;
            *row("maximised to the whole screen, no bar at all")
                << a.screens << Stack{win(s)} << std::optional<QRect>() << true << false;
            *row("full-screen, no bar window")
                << a.screens << Stack{video} << gnomeArea << true << true;
            *row("full-screen under a window of another app")
                << a.screens << Stack{video, win(s.adjusted(100, 100, -100, -100))}
                << std::optional<QRect>() << true << false;
            if (other != s) {
                *row("full-screen on the other screen only")
                    << a.screens << Stack{panel, win(other, Kind::normal, true)}
                    << std::optional<QRect>() << true << false;
            }
            *row("a manager that marks nothing: the bounds tell")
                << a.screens << Stack{win(s)} << std::optional<QRect>() << false << true;
        }
    }
    void fullScreenIsTheWindowManagersWord() {
        QFETCH(QList<QRect>, screens);
        QFETCH(Stack, stack);
        QFETCH(std::optional<QRect>, workArea);
        QFETCH(bool, fullScreenKnown);
        QFETCH(bool, hidden);
        X11Desktop desktop = desktopOf(screens, fullScreenKnown);
        desktop.workArea = workArea;
        const auto panelScreens = described(screens);
        const QRectF display = PanelGeometry::displayRect(panelScreens.first(), panelScreens);
        QCOMPARE(display, QRectF(screens.first()));
        QCOMPARE(WindowHeuristics::menuBarHidden(windowRecords(stack, desktop), display, 4242),
                 hidden);
    }

    void theManagersBarSpansTheReservedRows() {
        const QRect s(0, 0, 1920, 1080);
        X11Desktop desktop = desktopOf({s});
        desktop.managerName = QStringLiteral("GNOME Shell");
        desktop.workArea = QRect(0, 32, 1920, 1048);
        WindowList list = windowRecords({}, desktop);
        QCOMPARE(list.size(), 1);
        QCOMPARE(list[0].owner, std::optional<QString>(QStringLiteral("GNOME Shell")));
        QCOMPARE(list[0].bounds->rect(), std::optional<QRectF>(QRectF(0, 0, 1920, 32)));
        // A panel's strut says as much where there is no work area.
        X11Window bottom = win(QRect(0, 1040, 1920, 40), Kind::dock);
        bottom.strutTop = 27;
        bottom.strutSpan = {0, 1919};
        desktop.workArea.reset();
        list = windowRecords({bottom}, desktop);
        QCOMPARE(list.last().bounds->rect(), std::optional<QRectF>(QRectF(0, 0, 1920, 27)));
    }

    void menusBlockThePillOnEveryArrangement() {
        for (const auto& a : arrangements) {
            const QRect s = a.screens.first();
            const auto panelScreens = described(a.screens);
            const ScreenDescription& screen = panelScreens.first();
            const QRectF display = PanelGeometry::displayRect(screen, panelScreens);
            // A menu dropping from the top bar over the resting pill in the screen's middle.
            const X11Window menu =
                win(QRect(s.center().x() - 100, s.y() + 28, 200, 300), Kind::menu);
            const auto blocker = WindowHeuristics::findBlocker(
                windowRecords({menu}, desktopOf(a.screens)), display, s.center().x() - 33,
                s.center().x() + 33, PanelGeometry::rightEdge(screen.frame), s.width(), 4242);
            QVERIFY2(blocker, a.name);
            QCOMPARE(blocker->leftEdge, double(s.center().x() - 100));
        }
    }
};

QTEST_GUILESS_MAIN(tst_X11WindowRecords)
#include "tst_X11WindowRecords.moc"
