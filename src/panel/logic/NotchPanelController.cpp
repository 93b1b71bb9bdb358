#include "panel/logic/NotchPanelController.h"

#include "core/Environment.h"
#include "panel/logic/WindowHeuristics.h"

#include <QDateTime>
#include <QLocale>
#include <QScopeGuard>

namespace MirlPlayer {

using namespace PanelGeometry;

NotchPanelController::NotchPanelController(Clock& clock, ScreenInfo& screens, Pointer& pointer,
                                           WindowFacts& windows, Inputs inputs, Outputs outputs,
                                           QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_screens(screens)
    , m_pointer(pointer)
    , m_windows(windows)
    , m_inputs(std::move(inputs))
    , m_outputs(std::move(outputs))
    , m_guard(&PointerGuard::shared())
    , m_forceExpanded(expandForced())
    , m_lastActivity(clock.now())
    , m_screenDebounce(
          0.25, [this] { refreshPlacement(); }, clock) {
    // The views ask for the library through the layout; the controller is the one way in.
    connect(&m_layout, &NotchLayout::libraryRequested, this, &NotchPanelController::setLibraryOpen);
    connect(&m_layout, &NotchLayout::libraryOpenChanged, this,
            &NotchPanelController::libraryOpenChanged);
    connect(&m_layout, &NotchLayout::expandedChanged, this, [this](bool expanded) {
        if (m_outputs.setPollingFast)
            m_outputs.setPollingFast(expanded);
    });
    m_layout.onLibraryToggle = [this](bool open) {
        const Spring motion = spring(0.42, 0.9);
        m_layout.setMotion(motion);
        m_layout.setLibraryOpen(open);
        if (const auto screen = currentScreen())
            placePill(m_stage, *screen, motion);
    };
    m_screens.setChangeHandler([this] { screensChanged(); });
}

NotchPanelController::~NotchPanelController() {
    m_screens.setChangeHandler({});
    m_guard->setPointerSource({});
}

double NotchPanelController::motionSpeed() const {
    const double m = m_inputs.motionSpeed ? m_inputs.motionSpeed() : 1.0;
    return m > 0 ? m : 1.0;
}

Spring NotchPanelController::spring(double response, double damping) const {
    return Spring{response / motionSpeed(), damping, 0};
}

std::optional<ScreenDescription> NotchPanelController::currentScreen() const {
    return targetScreen(m_screens.screens(), m_screens.mainScreen());
}

Context NotchPanelController::context(const ScreenDescription& screen) const {
    Context c;
    c.screen = screen;
    c.notchSize = m_layout.notchSize();
    c.position = pillPosition(m_inputs.positionID ? m_inputs.positionID() : QString());
    c.showVisualizer = m_inputs.showVisualizer ? m_inputs.showVisualizer() : true;
    c.libraryOpen = m_layout.libraryOpen();
    c.fullscreenActive = m_fullscreenActive;
    return c;
}

void NotchPanelController::start(NotchPanel* panel) {
    m_panel = panel;
    m_guard->setPointerSource([this] { return pointer().location; });
    const auto screen = currentScreen();
    if (screen)
        m_layout.setNotchSize(measureNotch(*screen));
    m_stage = m_forceExpanded ? Stage::open : Stage::rest;
    if (screen) {
        placePill(m_stage, *screen, std::nullopt);
        applyHitRegion(*screen);
    }
    if (m_panel)
        m_panel->orderFrontRegardless();
    if (m_outputs.setPollingFast)
        m_outputs.setPollingFast(m_layout.expanded());
    m_ticker.start();
}

void NotchPanelController::stop() {
    m_ticker.stop();
    m_screenDebounce.cancel();
}

PointerReading NotchPanelController::pointer() {
    return m_tickPointer ? *m_tickPointer : m_pointer.read();
}

bool NotchPanelController::pointerDown() {
    if (!m_panel)
        return false;
    // A lost button-up must not leave the press stuck.
    if (!(pointer().buttons & 1u))
        m_panel->pointerDownInPanel = false;
    return m_panel->pointerDownInPanel;
}

void NotchPanelController::readWindowsIfStale() {
    if (now() - m_windowsReadAt <= 0.15)
        return;
    m_windowsReadAt = now();
    m_windowsCache = m_windows.onScreenWindows().value_or(WindowList{});
}

bool NotchPanelController::menuBarTest(const ScreenDescription& screen) {
    if (now() - m_lastMenuCheck < 0.2)
        return m_cachedMenuHidden;
    m_lastMenuCheck = now();
    readWindowsIfStale();
    m_cachedMenuHidden = WindowHeuristics::menuBarHidden(
        m_windowsCache, displayRect(screen, m_screens.screens()), m_windows.ownPid());
    return m_cachedMenuHidden;
}

bool NotchPanelController::blockerTest(const ScreenDescription& screen) {
    if (now() - m_lastPanelCheck < 0.15)
        return m_cachedPanelBlocks;
    m_lastPanelCheck = now();
    readWindowsIfStale();
    const Context c = context(screen);
    // The resting place itself, never the dodged one, or the pill would chase its own shadow.
    const double pillLeft =
        rectFor(c, pillPlacement(Stage::rest, c), NotchLayout::collapsedPill).x();
    const double pillRight = pillLeft + NotchLayout::collapsedPill.width();
    const auto blocker = WindowHeuristics::findBlocker(
        m_windowsCache, displayRect(screen, m_screens.screens()), pillLeft, pillRight,
        rightEdge(screen.frame), screen.frame.width(), m_windows.ownPid());
    m_cachedPanelBlocks = blocker.has_value();
    if (blocker) {
        m_panelLeftEdge = blocker->leftEdge;
        m_panelBlockerOwner = blocker->owner;
    }
    return m_cachedPanelBlocks;
}

void NotchPanelController::tick() {
    const auto screen = currentScreen();
    if (!screen)
        return;
    // One reading of the pointer and of the clock serves the whole pass.
    m_tickPointer = m_pointer.read();
    m_tickNow = m_clock.now();
    const auto forget = qScopeGuard([this] {
        m_tickPointer.reset();
        m_tickNow.reset();
    });
    const QPointF p = m_tickPointer->location;

    readWindowsIfStale();

    // Overview: the panel goes away entirely and forgets its hover.
    if (WindowHeuristics::overviewVisible(m_windowsCache,
                                          displayRect(*screen, m_screens.screens()))) {
        if (m_overviewActive)
            return;
        log(QStringLiteral("Panel hidden: Mission Control / overview detected"));
        m_overviewActive = true;
        if (m_panel) {
            m_panel->orderOut();
            m_panel->setHitRect({});
            m_panel->setIgnoresMouseEvents(true);
        }
        // The stage first, so the library's closing leaves the hidden panel click-through.
        m_stage = Stage::rest;
        m_layout.setLibraryOpen(false);
        m_triggerSince.reset();
        m_needsFreshHover = true;
        return;
    }
    if (m_overviewActive) {
        log(QStringLiteral("Panel shown again: overview ended"));
        m_overviewActive = false;
        m_fullscreenActive = menuBarTest(*screen);
        placePill(Stage::rest, *screen, std::nullopt);
        if (m_panel)
            m_panel->orderFrontRegardless();
    }

    // After an overview a pointer left under the notch must leave the trigger once first.
    if (m_needsFreshHover) {
        applyHitRegion(*screen, p);
        if (!containsPoint(triggerRect(context(*screen)), p))
            m_needsFreshHover = false;
        return;
    }

    // Full-screen watch, at rest only and never under a hovering pointer.
    const bool hidden = menuBarTest(*screen);
    if (m_stage == Stage::rest && hidden != m_fullscreenActive &&
        !containsPoint(triggerRect(context(*screen)), p)) {
        m_fullscreenActive = hidden;
        placePill(m_stage, *screen, spring(0.42, 1));
    }

    applyHitRegion(*screen, p);

    // Blockers freeze everything below while they stand.
    const bool blocks = blockerTest(*screen);
    if (blocks && !m_panelDodgeActive) {
        log(QStringLiteral("Panel moved aside for a menu/panel owned by ") + m_panelBlockerOwner);
        m_panelDodgeActive = true;
        if (m_stage != Stage::rest)
            applyStage(Stage::rest, *screen);
        else
            placePill(Stage::rest, *screen, spring(0.42, 1));
        return;
    }
    if (blocks)
        return;
    if (m_panelDodgeActive) {
        m_panelDodgeActive = false;
        m_panelLeftEdge = noLeftEdge;
        placePill(m_stage, *screen, spring(0.42, 1));
    }

    if (now() - m_lastDlog > 0.5) {
        m_lastDlog = now();
        writeDebugLine();
    }
    if (now() - m_lastStateBroadcast > 0.2) {
        m_lastStateBroadcast = now();
        broadcast(*screen);
    }

    const double touched =
        now() - (m_inputs.settingsTouchedAt ? m_inputs.settingsTouchedAt() : Clock::distantPast);
    const bool holding = m_inputs.settingsHolding && m_inputs.settingsHolding();
    const bool previewLive = touched < 1.4 || (holding && touched < 30);

    if (!m_forceExpanded && !previewLive) {
        if (m_previewOpenedLibrary) {
            m_previewOpenedLibrary = false;
            if (m_layout.libraryOpen())
                setLibraryOpen(false);
        }
        const Context c = context(*screen);
        const bool inTrigger = containsPoint(triggerRect(c), p);
        const bool inHold = containsPoint(holdRect(c), p);
        if (inTrigger && !m_triggerSince)
            m_triggerSince = now();
        if (!inTrigger)
            m_triggerSince.reset();

        bool wantOpen = false;
        if (m_triggerSince && now() - *m_triggerSince >= 0.22 && inTrigger)
            wantOpen = true;
        else if (m_stage != Stage::rest && inHold)
            wantOpen = true;
        else
            wantOpen = pointerDown();

        if (m_layout.libraryOpen()) {
            const bool saved = wantOpen;
            if (!inHold && !pointerDown()) {
                if (!m_libraryExitSince)
                    m_libraryExitSince = now();
            } else {
                m_libraryExitSince.reset();
            }
            wantOpen = !m_libraryExitSince || now() - *m_libraryExitSince < 0.65 ? true : saved;
        }
        // A card that has just opened cannot close at once.
        if (m_stage == Stage::open && now() - m_lastOpen < 0.4)
            wantOpen = true;

        noteActivity(containsPoint(pillRect(c), p) || m_stage != Stage::rest);
        requestStage(wantOpen ? Stage::open : Stage::rest, *screen);
        return;
    }

    // Forced open: by the developer switch, or while the user previews a setting.
    noteActivity(true);
    requestStage(Stage::open, *screen);
    const QString area = m_inputs.previewArea ? m_inputs.previewArea() : QString();
    if (previewLive && area.contains(QLatin1String("Library"))) {
        if (m_stage == Stage::open && !m_layout.libraryOpen()) {
            m_previewOpenedLibrary = true;
            setLibraryOpen(true);
        }
    } else if (m_previewOpenedLibrary && m_layout.libraryOpen()) {
        m_previewOpenedLibrary = false;
        setLibraryOpen(false);
    }
}

void NotchPanelController::requestStage(Stage target, const ScreenDescription& screen) {
    if (m_stage == target)
        return;
    if (now() - m_lastStageChange < 0.3 / motionSpeed())
        return;
    Stage next;
    if (m_stage < target) {
        next =
            m_stage == Stage::rest && !m_fullscreenActive ? Stage::open : Stage(int(m_stage) + 1);
    } else {
        next =
            m_stage == Stage::open && !m_fullscreenActive ? Stage::rest : Stage(int(m_stage) - 1);
    }
    applyStage(next, screen);
}

void NotchPanelController::applyStage(Stage next, const ScreenDescription& screen) {
    if (next != Stage::open) {
        if (m_layout.libraryOpen()) {
            m_layout.setMotion(spring(0.4, 0.82));
            m_layout.setLibraryOpen(false);
        }
        m_libraryExitSince.reset();
    }
    const bool wasExpanded = m_layout.expanded();
    m_stage = next;
    m_lastStageChange = now();
    if (next == Stage::open)
        m_lastOpen = now();
    // A size change bounces slightly, a move does not.
    const bool expanded = pillPlacement(next, context(screen)).expanded;
    placePill(next, screen, expanded == wasExpanded ? spring(0.42, 1) : spring(0.4, 0.82));
    applyHitRegion(screen);
}

void NotchPanelController::placePill(Stage stage, const ScreenDescription& screen,
                                     std::optional<Spring> motion) {
    if (m_panel) {
        m_panel->setLevel(stage == Stage::open ? 3 : 27);
        const QRectF frame = panelFrame(screen, m_layout.notchSize());
        if (m_panel->frame() != frame)
            m_panel->setFrame(frame);
    }
    const Context c = context(screen);
    const Placement placement = pillPlacement(stage, c);
    double centerX = placement.centerX;
    if (m_panelDodgeActive && m_panelLeftEdge < noLeftEdge)
        centerX = dodgeCorrectedCenterX(placement, c, m_panelLeftEdge);
    m_layout.setPlacement(centerX, placement.top, placement.expanded, sizeFor(placement, c),
                          motion);
    broadcast(screen);
}

void NotchPanelController::setLibraryOpen(bool open) {
    if (m_layout.libraryOpen() == open)
        return;
    m_guard->arm(pointer().location);
    if (m_layout.onLibraryToggle) {
        m_layout.onLibraryToggle(open);
    } else {
        m_layout.setMotion(spring(0.42, 0.9));
        m_layout.setLibraryOpen(open);
    }
}

void NotchPanelController::libraryOpenChanged(bool open) {
    if (!m_panel)
        return;
    m_panel->libraryAcceptsKeyboard = open;
    if (!open)
        m_panel->resignKey();
    if (const auto screen = currentScreen())
        applyHitRegion(*screen);
}

void NotchPanelController::noteActivity(bool isActive) {
    if (isActive)
        m_lastActivity = now();
    const bool dim = now() - m_lastActivity > dimDelay;
    if (dim == m_dimmed)
        return;
    m_dimmed = dim;
    if (m_panel)
        m_panel->animateAlpha(dim ? dimmedAlpha : 1.0, dim ? 1.2 : 0.25);
}

void NotchPanelController::applyHitRegion(const ScreenDescription& screen,
                                          std::optional<QPointF> at) {
    if (!m_panel)
        return;
    const PanelGeometry::Context c = context(screen);
    m_panel->setHoverRect(inWindow(m_panel->frame(), hoverRect(m_stage, c)));
    if (m_stage != Stage::open) {
        m_panel->setHitRect({});
        m_panel->setIgnoresMouseEvents(true);
        return;
    }
    const QRectF hit = hitRegion(c);
    const QPointF p = at ? *at : pointer().location;
    const bool down = pointerDown();
    m_panel->setIgnoresMouseEvents(!(containsPoint(hit, p) || down));
    m_panel->setHitRect(inWindow(m_panel->frame(), hit));
}

MirlState NotchPanelController::currentState(const ScreenDescription& screen) const {
    const QSizeF size =
        m_layout.expanded()
            ? expandedSize(m_layout.libraryOpen(),
                           m_inputs.showVisualizer ? m_inputs.showVisualizer() : true)
            : NotchLayout::collapsedPill;
    const QRectF& f = screen.frame;
    return {m_layout.expanded(), int(f.x() + m_layout.pillCenterX() - size.width() / 2),
            int(topEdge(f) - m_layout.pillTop() - size.height()), int(size.width()),
            int(size.height())};
}

void NotchPanelController::broadcast(const ScreenDescription& screen) {
    if (m_outputs.broadcast)
        m_outputs.broadcast(currentState(screen));
}

void NotchPanelController::reposition() {
    const auto screen = currentScreen();
    if (!screen)
        return;
    m_layout.setNotchSize(measureNotch(*screen));
    placePill(m_stage, *screen, spring(0.42, 1));
    if (!m_overviewActive && m_panel)
        m_panel->orderFrontRegardless();
}

void NotchPanelController::visualizerToggled() {
    const auto screen = currentScreen();
    if (!screen)
        return;
    placePill(m_stage, *screen, spring(0.3, 1));
}

void NotchPanelController::refreshPlacement() {
    if (!m_panel || !currentScreen())
        return;
    m_windowsReadAt = Clock::distantPast;
    m_lastMenuCheck = Clock::distantPast;
    m_lastPanelCheck = Clock::distantPast;
    tick();
    reposition();
    log(QStringLiteral("Panel placement refreshed after display change/wake; overview=") +
        (m_overviewActive ? QStringLiteral("true") : QStringLiteral("false")));
}

void NotchPanelController::log(const QString& line) {
    if (m_outputs.logLine)
        m_outputs.logLine(line);
}

void NotchPanelController::writeDebugLine() {
    if (!m_debugLog.enabled())
        return;
    const QString pos =
        pillPosition(m_inputs.positionID ? m_inputs.positionID() : QString()) == PillPosition::right
            ? QStringLiteral("right")
            : QStringLiteral("notch");
    m_debugLog.append(
        QLocale::system().toString(QDateTime::currentDateTime(), QLocale::ShortFormat) +
        QStringLiteral("  fs=") +
        (m_fullscreenActive ? QStringLiteral("true") : QStringLiteral("false")) +
        QStringLiteral(" stage=") + stageName(m_stage) + QStringLiteral(" pos=") + pos +
        QStringLiteral(" | ") + WindowHeuristics::windowDigest(m_windows.onScreenWindows()));
}

} // namespace MirlPlayer
