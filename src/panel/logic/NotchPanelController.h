#pragma once

#include "core/Clock.h"
#include "core/Debouncer.h"
#include "core/MainLoopTicker.h"
#include "panel/logic/MirlStateSignal.h"
#include "panel/logic/NotchLayout.h"
#include "panel/logic/PanelDebugLog.h"
#include "panel/logic/PanelGeometry.h"
#include "panel/logic/PointerGuard.h"
#include "platform/NotchPanel.h"
#include "platform/Pointer.h"
#include "platform/ScreenInfo.h"
#include "platform/WindowFacts.h"

#include <QObject>
#include <functional>
#include <optional>

namespace MirlPlayer {

// Decides twenty times a second what the panel is doing. The panel ignores the mouse while it
// rests, so hover is polled: each tick reads the pointer once and runs, in a fixed order, the
// overview watch, the full-screen watch, the blocker watch, the state broadcast, the settings
// preview and the stage machine. Earlier steps end the pass on purpose.
class NotchPanelController : public QObject {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::NotchLayout* layout READ layout CONSTANT)
public:
    // What the controller reads from the look and the tuning models, each read afresh at use.
    struct Inputs {
        std::function<double()> motionSpeed = [] { return 1.0; };
        std::function<bool()> showVisualizer = [] { return true; };
        std::function<QString()> positionID = [] { return QStringLiteral("notch"); };
        // When a tuning setting was last touched (a Clock time), whether one is being held, and
        // the name of the settings area being previewed.
        std::function<double()> settingsTouchedAt = [] { return Clock::distantPast; };
        std::function<bool()> settingsHolding = [] { return false; };
        std::function<QString()> previewArea = [] { return QString(); };
    };
    // Where the controller reports to.
    struct Outputs {
        std::function<void(bool)> setPollingFast;
        std::function<void(const QString&)> logLine;
        std::function<void(const MirlState&)> broadcast = &MirlStateSignal::send;
    };

    static constexpr double tickInterval = 0.05;
    static constexpr double openDelay = 0.22;
    static constexpr double dimDelay = 30;
    static constexpr double dimmedAlpha = 0.35;

    NotchPanelController(Clock& clock, ScreenInfo& screens, Pointer& pointer, WindowFacts& windows,
                         Inputs inputs, Outputs outputs, QObject* parent = nullptr);
    ~NotchPanelController() override;

    NotchLayout* layout() { return &m_layout; }
    // NOTCH_EXPAND by default; tests set it before `start`.
    void setForceExpanded(bool forced) { m_forceExpanded = forced; }
    // The process-wide guard by default; tests give their own before `start`.
    void setPointerGuard(PointerGuard& guard) { m_guard = &guard; }
    void setDebugLog(PanelDebugLog log) { m_debugLog = std::move(log); }

    // Takes the window (not owned; it must outlive the controller or be detached with
    // start(nullptr)), sets the first stage, shows the window and starts the tick.
    void start(NotchPanel* panel);
    void stop();

    void tick();
    void requestStage(Stage target, const ScreenDescription& screen);
    void applyStage(Stage next, const ScreenDescription& screen);
    void placePill(Stage stage, const ScreenDescription& screen, std::optional<Spring> motion);
    Q_INVOKABLE void setLibraryOpen(bool open);
    void noteActivity(bool isActive);
    void applyHitRegion(const ScreenDescription& screen, std::optional<QPointF> at = {});
    Q_INVOKABLE void reposition();
    void refreshPlacement();

    // The look's pill position changed.
    Q_SLOT void themeGeometryChanged() { reposition(); }
    // The visualizer was switched on or off: the card changes layout with a spring of its own.
    Q_SLOT void visualizerToggled();
    // Screen parameters changed or the machine woke: refreshes placement 250 ms after the last.
    void screensChanged() { m_screenDebounce.trigger(); }
    Debouncer& screenDebouncer() { return m_screenDebounce; }

    Stage stage() const { return m_stage; }
    bool fullscreenActive() const { return m_fullscreenActive; }
    bool overviewActive() const { return m_overviewActive; }
    bool needsFreshHover() const { return m_needsFreshHover; }
    bool panelDodgeActive() const { return m_panelDodgeActive; }
    double panelLeftEdge() const { return m_panelLeftEdge; }
    QString panelBlockerOwner() const { return m_panelBlockerOwner; }
    bool dimmed() const { return m_dimmed; }
    bool previewOpenedLibrary() const { return m_previewOpenedLibrary; }
    std::optional<double> triggerSince() const { return m_triggerSince; }
    std::optional<double> libraryExitSince() const { return m_libraryExitSince; }
    bool forceExpanded() const { return m_forceExpanded; }
    bool ticking() const { return m_ticker.isActive(); }

    PanelGeometry::Context context(const ScreenDescription& screen) const;
    std::optional<ScreenDescription> currentScreen() const;
    MirlState currentState(const ScreenDescription& screen) const;

private:
    double now() const { return m_tickNow ? *m_tickNow : m_clock.now(); }
    double motionSpeed() const;
    Spring spring(double response, double damping) const;
    // The pass's pointer reading inside a tick, else a fresh one.
    PointerReading pointer();
    bool pointerDown();
    void readWindowsIfStale();
    bool menuBarTest(const ScreenDescription& screen);
    bool blockerTest(const ScreenDescription& screen);
    void broadcast(const ScreenDescription& screen);
    void log(const QString& line);
    void writeDebugLine();
    void libraryOpenChanged(bool open);

    Clock& m_clock;
    ScreenInfo& m_screens;
    Pointer& m_pointer;
    WindowFacts& m_windows;
    Inputs m_inputs;
    Outputs m_outputs;
    PointerGuard* m_guard;
    PanelDebugLog m_debugLog;

    NotchPanel* m_panel = nullptr;
    NotchLayout m_layout;
    bool m_forceExpanded;
    Stage m_stage = Stage::rest;
    double m_lastStageChange = Clock::distantPast;
    double m_lastOpen = Clock::distantPast;
    std::optional<double> m_libraryExitSince;
    std::optional<double> m_triggerSince;
    std::optional<PointerReading> m_tickPointer;
    std::optional<double> m_tickNow;
    MainLoopTicker m_ticker{int(tickInterval * 1000), [this] { tick(); }};
    bool m_fullscreenActive = false;
    bool m_overviewActive = false;
    bool m_needsFreshHover = false;
    bool m_previewOpenedLibrary = false;
    WindowList m_windowsCache;
    double m_windowsReadAt = Clock::distantPast;
    double m_lastActivity;
    bool m_dimmed = false;
    bool m_cachedMenuHidden = false;
    double m_lastMenuCheck = Clock::distantPast;
    bool m_cachedPanelBlocks = false;
    double m_lastPanelCheck = Clock::distantPast;
    double m_panelLeftEdge = PanelGeometry::noLeftEdge;
    bool m_panelDodgeActive = false;
    QString m_panelBlockerOwner;
    double m_lastDlog = Clock::distantPast;
    double m_lastStateBroadcast = Clock::distantPast;
    Debouncer m_screenDebounce;
};

} // namespace MirlPlayer
