#include "PanelFakes.h"
#include "panel/logic/NotchPanelController.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace MirlPlayer;
using namespace MirlPlayer::Test;

namespace {

// Points on the 1512 x 982 screen (bottom-left origin).
const QPointF inTrigger(756, 930);  // on the resting pill under the notch
const QPointF inTopStrip(756, 970); // the full-screen trigger strip under the notch
const QPointF onCard(600, 800);     // on the open card, outside the trigger
const QPointF nearPill(650, 850);   // near the resting pill but outside the trigger
const QPointF faraway(100, 100);

const WindowRecord fullScreenVideo = window("mpv", 0, QRectF(0, 0, 1512, 982), 300);
const WindowRecord popupOverPill = window("menu", 101, QRectF(700, 24, 200, 300), 301);
const WindowRecord overview = window("Dock", 18, QRectF(0, 0, 1512, 982), 2);

struct Harness {
    ManualClock clock{1000.0};
    FakeScreens screens;
    FakePointer pointer;
    FakeWindows windows;
    FakePanel panel;
    PointerGuard guard;
    QStringList logs;
    QList<MirlState> states;
    QList<bool> polling;
    double motion = 1.0;
    double touchedAt = Clock::distantPast;
    bool holding = false;
    QString previewArea;
    std::unique_ptr<NotchPanelController> controller;

    explicit Harness(bool forced = false, QString home = {}) {
        NotchPanelController::Inputs in;
        in.motionSpeed = [this] { return motion; };
        in.settingsTouchedAt = [this] { return touchedAt; };
        in.settingsHolding = [this] { return holding; };
        in.previewArea = [this] { return previewArea; };
        NotchPanelController::Outputs out;
        out.logLine = [this](const QString& l) { logs << l; };
        out.broadcast = [this](const MirlState& s) { states << s; };
        out.setPollingFast = [this](bool fast) { polling << fast; };
        pointer.at = faraway;
        controller =
            std::make_unique<NotchPanelController>(clock, screens, pointer, windows, in, out);
        controller->setForceExpanded(forced);
        controller->setPointerGuard(guard);
        controller->setDebugLog(PanelDebugLog(home.isEmpty() ? QDir::tempPath() + "/none" : home));
        controller->start(&panel);
    }
    // Ticks as the timer does, every 0.05 s, for `seconds`.
    void run(double seconds) {
        const int n = int(seconds / 0.05 + 0.5);
        for (int i = 0; i < n; ++i) {
            clock.advance(0.05);
            controller->tick();
        }
    }
    Stage stage() const { return controller->stage(); }
    // Rests the pointer in the trigger until the card is open; answers when that was.
    double openCard() {
        pointer.at = inTrigger;
        for (int i = 0; i < 20 && stage() != Stage::open; ++i)
            run(0.05);
        return clock.now();
    }
};

} // namespace

class tst_NotchPanelController : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void briefHoverDoesNothingAndResetsTheTrigger() {
        Harness h;
        h.pointer.at = inTrigger;
        h.run(0.05);
        const double entered = h.clock.now();
        QCOMPARE(h.controller->triggerSince(), std::optional<double>(entered));
        h.run(0.15); // in the trigger for 0.2 s of ticks, i.e. less than 0.22 s
        h.pointer.at = faraway;
        h.run(0.05);
        QCOMPARE(h.stage(), Stage::rest);
        QVERIFY(!h.controller->triggerSince());
        // Coming back starts the count again.
        h.pointer.at = inTrigger;
        h.run(0.25); // first seen on the first tick, 0.2 s ago
        QCOMPARE(h.stage(), Stage::rest);
        h.run(0.05);
        QCOMPARE(h.stage(), Stage::open);
    }

    void restingInTheTriggerOpensTheCard() {
        Harness h;
        h.pointer.at = inTrigger;
        h.run(0.25);
        QCOMPARE(h.stage(), Stage::rest);
        h.run(0.05);
        QCOMPARE(h.stage(), Stage::open);
        QCOMPARE(h.panel.level, 3);
        QVERIFY(h.controller->layout()->expanded());
        QCOMPARE(h.controller->layout()->motion()->dampingFraction, 0.82); // a size change bounces
        QCOMPARE(h.states.last(), (MirlState{true, 466, 776, 580, 168}));
        QCOMPARE(h.polling, (QList<bool>{false, true}));
    }

    void motionSpeedShortensTheDwellButNotTheHoverDelay_data() {
        QTest::addColumn<double>("motion");
        QTest::addColumn<double>("dwell");
        QTest::newRow("normal") << 1.0 << 0.3;
        QTest::newRow("twice as fast") << 2.0 << 0.15;
    }
    void motionSpeedShortensTheDwellButNotTheHoverDelay() {
        QFETCH(double, motion);
        QFETCH(double, dwell);
        Harness h;
        h.motion = motion;
        h.windows.list = WindowList{fullScreenVideo};
        h.run(0.05);
        QVERIFY(h.controller->fullscreenActive());
        QCOMPARE(h.controller->layout()->pillCenterX(), 1435.0);
        QCOMPARE(h.controller->layout()->motion()->response, 0.42 / motion);

        h.pointer.at = inTopStrip;
        h.run(0.25);
        QCOMPARE(h.stage(), Stage::rest); // the hover delay is never scaled
        h.run(0.05);
        QCOMPARE(h.stage(), Stage::peek); // out of the corner into the ordinary place first
        QCOMPARE(h.controller->layout()->pillCenterX(), 756.0);
        QVERIFY(!h.controller->layout()->expanded());
        h.run(dwell - 0.05);
        QCOMPARE(h.stage(), Stage::peek);
        h.run(0.1); // a tick's worth past the dwell, clear of rounding
        QCOMPARE(h.stage(), Stage::open);
    }

    void inFullScreenTheCardClosesThroughPeekBackToTheCorner() {
        Harness h;
        h.windows.list = WindowList{fullScreenVideo};
        h.run(0.05);
        h.pointer.at = inTopStrip;
        h.run(0.3);
        h.run(0.35);
        QCOMPARE(h.stage(), Stage::open);
        h.pointer.at = faraway;
        h.run(0.45);
        QCOMPARE(h.stage(), Stage::peek);
        QCOMPARE(h.controller->layout()->pillCenterX(), 756.0);
        h.run(0.35);
        QCOMPARE(h.stage(), Stage::rest);
        QCOMPARE(h.controller->layout()->pillCenterX(), 1435.0);
        QVERIFY(h.controller->fullscreenActive());
    }

    void aCardJustOpenedCannotCloseAtOnce() {
        Harness h;
        h.openCard();
        h.pointer.at = faraway;
        h.run(0.35);
        QCOMPARE(h.stage(), Stage::open);
        h.run(0.1);
        QCOMPARE(h.stage(), Stage::rest);
        QCOMPARE(h.panel.level, 27);
        QVERIFY(h.panel.ignoresMouse);
    }

    void theCardStaysWhileThePointerIsOnItOrAbove() {
        Harness h;
        h.openCard();
        h.pointer.at = onCard;
        h.run(2);
        QCOMPARE(h.stage(), Stage::open);
        h.pointer.at = QPointF(756, 990); // above the screen's top, still in the hold area
        h.run(1);
        QCOMPARE(h.stage(), Stage::open);
    }

    void aBlockerFreezesHoverAndTheTriggerKeepsItsTime() {
        Harness h;
        h.pointer.at = inTrigger;
        h.run(0.1);
        QVERIFY(h.controller->triggerSince());
        h.windows.list = WindowList{popupOverPill};
        for (int i = 0; i < 10 && !h.controller->panelDodgeActive(); ++i)
            h.run(0.05);
        QVERIFY(h.controller->panelDodgeActive());
        QCOMPARE(h.stage(), Stage::rest);
        QCOMPARE(h.logs.last(), QStringLiteral("Panel moved aside for a menu/panel owned by menu"));
        QCOMPARE(h.controller->layout()->pillCenterX(), 700.0 - 12 - 33);
        const auto since = h.controller->triggerSince();
        h.run(1);
        QCOMPARE(h.stage(), Stage::rest);
        QCOMPARE(h.controller->triggerSince(), since); // never reached while blocked
        const int broadcasts = h.states.size();
        h.run(0.5);
        QCOMPARE(h.states.size(), broadcasts); // no broadcast while the pass ends early

        h.windows.list = WindowList{};
        for (int i = 0; i < 10 && h.controller->panelDodgeActive(); ++i)
            h.run(0.05);
        QVERIFY(!h.controller->panelDodgeActive());
        // The first free tick opens at once: the pointer has been in the trigger all along.
        QCOMPARE(h.stage(), Stage::open);
        QCOMPARE(h.controller->panelLeftEdge(), PanelGeometry::noLeftEdge);
        QCOMPARE(h.controller->layout()->pillCenterX(), 756.0);
    }

    void aBlockerClosesAnOpenCardAndThePillReturnsWhenItGoes() {
        Harness h;
        h.openCard();
        h.run(0.1); // well inside the dwell: a blocker ignores it
        h.pointer.at = faraway;
        h.windows.list = WindowList{popupOverPill};
        h.run(0.2);
        QCOMPARE(h.stage(), Stage::rest);
        QVERIFY(!h.controller->layout()->expanded());
        QCOMPARE(h.controller->layout()->pillCenterX(), 655.0);
        h.windows.list = WindowList{};
        h.run(0.3);
        QVERIFY(!h.controller->panelDodgeActive());
        QCOMPARE(h.controller->layout()->pillCenterX(), 756.0);
        QVERIFY(h.controller->layout()->motion().has_value());
        h.run(1);
        QCOMPARE(h.stage(), Stage::rest); // it does not reopen by itself
    }

    void aPressInsideTheLibraryHoldsItOpenUntilRelease() {
        Harness h;
        h.openCard();
        h.controller->setLibraryOpen(true);
        QVERIFY(h.controller->layout()->libraryOpen());
        QVERIFY(h.panel.libraryAcceptsKeyboard);
        h.pointer.buttons = 1;
        h.panel.pointerDownInPanel = true;
        h.pointer.at = faraway;
        h.pointer.reads = 0;
        h.run(3);
        QCOMPARE(h.stage(), Stage::open);
        QCOMPARE(h.pointer.reads, 60); // one reading a tick serves hover, hit region and drag
        QVERIFY(!h.controller->libraryExitSince());
        QVERIFY(!h.panel.ignoresMouse); // the drag keeps the panel receiving the mouse

        h.pointer.buttons = 0;
        h.run(0.05);
        QVERIFY(!h.panel.pointerDownInPanel);
        QVERIFY(h.panel.ignoresMouse);
        QVERIFY(h.controller->libraryExitSince());
        h.run(0.55);
        QCOMPARE(h.stage(), Stage::open);
        h.run(0.15);
        QCOMPARE(h.stage(), Stage::rest);
        QVERIFY(!h.controller->layout()->libraryOpen());
        QVERIFY(!h.panel.libraryAcceptsKeyboard);
        QVERIFY(h.panel.resignCount > 0);
    }

    void aLibraryPreviewOpensTheLibraryOnceTheCardIsOpen() {
        Harness h;
        h.windows.list = WindowList{fullScreenVideo}; // so the card opens in two steps
        h.touchedAt = h.clock.now();
        h.previewArea = QStringLiteral("Library Layout");
        h.run(0.05);
        QCOMPARE(h.stage(), Stage::peek);
        QVERIFY(!h.controller->layout()->libraryOpen());
        h.run(0.2);
        QCOMPARE(h.stage(), Stage::peek);
        QVERIFY(!h.controller->layout()->libraryOpen());
        h.run(0.15);
        QCOMPARE(h.stage(), Stage::open);
        QVERIFY(h.controller->layout()->libraryOpen());
        QVERIFY(h.controller->previewOpenedLibrary());

        h.touchedAt = h.clock.now() - 1.35; // the preview goes stale in 0.05 s
        h.pointer.at = onCard;
        h.run(0.05);
        QVERIFY(h.controller->layout()->libraryOpen());
        h.run(0.05);
        QVERIFY(!h.controller->layout()->libraryOpen());
        QVERIFY(!h.controller->previewOpenedLibrary());
        QCOMPARE(h.stage(), Stage::open); // the card itself stays under the pointer
    }

    void fullScreenMovesTheRestingPillOnlyWhenNotHovered() {
        Harness h;
        h.pointer.at = inTrigger;
        h.run(0.05);
        h.pointer.at = QPointF(756, 915); // still in the trigger, below the pill
        h.windows.list = WindowList{fullScreenVideo};
        h.run(0.05);
        QVERIFY(!h.controller->fullscreenActive());
        h.pointer.at = faraway;
        h.run(0.3);
        QVERIFY(h.controller->fullscreenActive());
        QCOMPARE(h.controller->layout()->pillCenterX(), 1435.0);
        QCOMPARE(h.controller->layout()->pillTop(), 4.0);
        h.windows.list = WindowList{};
        h.run(0.3);
        QVERIFY(!h.controller->fullscreenActive());
        QCOMPARE(h.controller->layout()->pillCenterX(), 756.0);
    }

    void theWindowListIsReadAtMostSevenTimesASecond() {
        Harness h;
        h.windows.reads = 0;
        h.pointer.at = inTrigger;
        h.run(1);
        QVERIFY2(h.windows.reads <= 7, qPrintable(QString::number(h.windows.reads)));
        QVERIFY(h.windows.reads >= 4);
    }

    void theHitRegionFollowsTheCard() {
        Harness h;
        h.openCard();
        h.pointer.at = onCard;
        h.run(0.05);
        QVERIFY(!h.panel.ignoresMouse);
        // The card's hit region (460, 770, 592, 180) in the window's top-left coordinates.
        QCOMPARE(h.panel.hitRect, QRectF(460, 32, 592, 180));
        h.pointer.at = QPointF(756, 990); // still holding the card open, but outside the region
        h.run(0.05);
        QVERIFY(h.panel.ignoresMouse);
        QCOMPARE(h.stage(), Stage::open);
    }

    void idleDimmingFadesThePanelAndActivityWakesIt() {
        Harness h;
        h.run(30);
        QVERIFY(!h.controller->dimmed());
        h.run(0.1);
        QVERIFY(h.controller->dimmed());
        QCOMPARE(h.panel.alpha, 0.35);
        QCOMPARE(h.panel.alphaSeconds, 1.2);
        h.pointer.at = nearPill;
        h.run(0.05);
        QVERIFY(!h.controller->dimmed());
        QCOMPARE(h.panel.alpha, 1.0);
        QCOMPARE(h.panel.alphaSeconds, 0.25);
        QCOMPARE(h.stage(), Stage::rest);
    }
};

QTEST_GUILESS_MAIN(tst_NotchPanelController)
#include "tst_NotchPanelController.moc"
