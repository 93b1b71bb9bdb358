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
Q_DECLARE_METATYPE(X11Desktop)

namespace {

// The panel's screen (the primary) first; root pixels.
const QList<QList<QRect>> arrangements = {
    {QRect(0, 0, 1920, 1080)},
    {QRect(0, 1440, 1920, 1080), QRect(0, 0, 2560, 1440)},   // a laptop below a taller monitor
    {QRect(2560, 600, 1920, 1080), QRect(0, 0, 2560, 1440)}, // right of it, and lower
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

X11Desktop desktopOf(const QList<QRect>& screens, std::optional<QRect> workArea = {},
                     bool fullScreenKnown = true) {
    X11Desktop d;
    for (const QRect& s : screens)
        d.root |= s;
    d.screens = screens;
    d.workArea = workArea;
    d.fullScreenKnown = fullScreenKnown;
    return d;
}

// The panel's screen as the panel sees it (bottom-left points, origin at the primary's bottom
// left) and its display rectangle.
std::pair<ScreenDescription, QRectF> panelScreen(const QList<QRect>& screens) {
    const ScreenFlip flip{double(screens.first().bottom() + 1)};
    QList<ScreenDescription> list;
    for (const QRect& s : screens) {
        list.append(ScreenDescription{});
        list.last().frame = flip.toBottomLeft(QRectF(s));
    }
    return {list.first(), PanelGeometry::displayRect(list.first(), list)};
}

} // namespace

class tst_X11WindowRecords : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void fullScreenIsTheWindowManagersWord_data() {
        QTest::addColumn<Stack>("stack");
        QTest::addColumn<X11Desktop>("desktop");
        QTest::addColumn<bool>("hidden");
        for (const auto& screens : arrangements) {
            const QRect s = screens.first();
            const X11Window panel = win(QRect(s.x(), s.y(), s.width(), 28), Kind::dock);
            const X11Window video = win(s, Kind::normal, true);
            const X11Window maximised = win(s.adjusted(0, 32, 0, 0));
            const X11Desktop plain = desktopOf(screens);
            const X11Desktop gnome = desktopOf(screens, s.adjusted(0, 32, 0, 0));
            auto row = [&](const char* what) -> QTestData& {
                return QTest::newRow(
                    qPrintable(QStringLiteral("%1 at %2,%3").arg(what).arg(s.x()).arg(s.y())));
            };
            row("full-screen above a top panel") << Stack{panel, video} << plain << true;
            row("maximised below a top panel") << Stack{panel, maximised} << plain << false;
            row("a top panel above the full-screen window")
                << Stack{video, panel} << plain << false;
            row("maximised under a bar the manager draws") << Stack{maximised} << gnome << false;
            row("maximised to the whole screen, no bar at all") << Stack{win(s)} << plain << false;
            row("full-screen, no bar window") << Stack{video} << gnome << true;
            row("full-screen under a window of another app")
                << Stack{video, win(s.adjusted(100, 100, -100, -100))} << plain << false;
            if (screens.size() > 1)
                row("full-screen on another screen only")
                    << Stack{panel, win(screens.last(), Kind::normal, true)} << plain << false;
            row("a manager that marks nothing: the bounds tell")
                << Stack{win(s)} << desktopOf(screens, {}, false) << true;
        }
    }
    void fullScreenIsTheWindowManagersWord() {
        QFETCH(Stack, stack);
        QFETCH(X11Desktop, desktop);
        QFETCH(bool, hidden);
        const QRectF display = panelScreen(desktop.screens).second;
        QCOMPARE(display, QRectF(desktop.screens.first()));
        QCOMPARE(WindowHeuristics::menuBarHidden(windowRecords(stack, desktop), display, 4242),
                 hidden);
    }

    void theManagersBarSpansTheReservedRows() {
        const QRect s(0, 0, 1920, 1080);
        QCOMPARE(windowRecords({}, desktopOf({s}, QRect(0, 32, 1920, 1048)))[0].bounds->rect(),
                 QRectF(0, 0, 1920, 32));
        X11Window bottom = win(QRect(0, 1040, 1920, 40), Kind::dock); // and a strut says as much
        bottom.strutTop = 27;
        bottom.strutSpan = {0, 1919};
        QCOMPARE(windowRecords({bottom}, desktopOf({s})).last().bounds->rect(),
                 QRectF(0, 0, 1920, 27));
    }

    void menusBlockThePillOnEveryArrangement() {
        for (const auto& screens : arrangements) {
            const QRect s = screens.first();
            const auto [screen, display] = panelScreen(screens);
            // A menu dropping from the top bar over the resting pill in the screen's middle.
            const X11Window menu =
                win(QRect(s.center().x() - 100, s.y() + 28, 200, 300), Kind::menu);
            const auto blocker = WindowHeuristics::findBlocker(
                windowRecords({menu}, desktopOf(screens)), display, s.center().x() - 33,
                s.center().x() + 33, PanelGeometry::rightEdge(screen.frame), s.width(), 4242);
            QVERIFY(blocker);
            QCOMPARE(blocker->leftEdge, double(s.center().x() - 100));
        }
    }
};

QTEST_GUILESS_MAIN(tst_X11WindowRecords)
#include "tst_X11WindowRecords.moc"
