#include "app/DesktopSession.h"

#include "app/Feedback.h"
#include "app/StatusMenu.h"

#include "audio/AudioCaptureSettings.h"
#include "core/FocusLog.h"
#include "core/Preferences.h"
#include "library/LibraryModule.h"
#include "library/LibraryViewModel.h"
#include "library/SpotifyMemory.h"
#include "look/ReduceTransparency.h"
#include "look/Theme.h"
#include "panel/host/NotchPanelHost.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"
#include "playback/SpotifyPlayRequest.h"
#include "playback/SpotifyQueue.h"
#include "settings/SettingsWindow.h"
#include "setup/SetupWindow.h"
#include "setup/SystemSetup.h"
#include "spotify/SpotifyLibrary.h"
#include "visualizers/VizConfig.h"

#include <QCoreApplication>
#include <QMenu>

namespace MirlPlayer {

DesktopSession::DesktopSession()
    : m_bridge(Preferences::shared())
    , m_delegate(Preferences::shared(), &m_bridge)
    // The bus reads the position from the player, which brings the clock up to now: the
    // clock itself moves only while a view shows it.
    , m_busService(&m_delegate.player(), &m_delegate.player())
    , m_audio(m_bridge)
    , m_statusVisibility(QDBusConnection::sessionBus())
    , m_contrast(QDBusConnection::sessionBus()) {
    PlayerState& player = m_delegate.player();
    // The panel and the settings draw solid surfaces while the desktop (or, on a desktop without
    // such a setting, the program's own switch) asks for reduced transparency.
    connect(&m_contrast, &DesktopContrast::changed, this,
            [this] { ReduceTransparency::shared().setDesktopSetting(m_contrast.highContrast()); });
    ReduceTransparency::shared();
    m_busService.setAudioSources(&AudioCaptureSettings::shared(), player.eqStore());
    m_busService.registerOn(QDBusConnection::sessionBus());
    connect(&m_busService, &MirlBusService::reopenRequested, &m_delegate,
            &AppDelegate::applicationShouldHandleReopen);
    connect(&m_busService, &MirlBusService::openSettingsRequested, &m_delegate,
            [this](const QString& page) { m_delegate.openSettings(page); });
    // Songs chosen in the program start for real, and Spotify's window is kept back meanwhile.
    m_playRequests =
        std::make_unique<SpotifyPlayRequest>(player, SpotifyLibrary::shared(), m_workspace);
    watchActivations();
    // The library memory exists from the start, so that signing out or changing accounts
    // removes the former account's memory file even when the library was never opened.
    SpotifyMemory::shared();
    // The program's own song queue follows every applied Spotify sample.
    SpotifyQueue::shared().attach(player);

    // The audio engine, started by the player gate and stopped on the way out, so that no
    // capture outlives the process.
    player.setAudioEngineStarter([this](PlayerState& state) { m_audio.startFor(state); });
    AppDelegate::Hooks hooks;
    hooks.stopAudioEngine = [this](PlayerState&) { m_audio.stop(); };
    hooks.buildPanel = [this](AppDelegate& app) { buildPanel(app); };
    hooks.composeFeedback = [this](bool idea) { sendFeedback(idea); };
    hooks.openSettings = [this](const QString& page) { openSettings(page); };
    hooks.showSetupWindow = [this](AppDelegate&) { showSetupWindow(); };
    hooks.setupWindowOpen = [this] { return m_setup != nullptr; };
    hooks.stopSetupProbe = [this] {
        if (m_setup)
            m_setup->model()->shutDown();
    };
    hooks.closeSetupWindow = [this] {
        if (m_setup)
            m_setup->close();
    };
    m_delegate.setHooks(std::move(hooks));
    connect(qApp, &QCoreApplication::aboutToQuit, &m_delegate,
            &AppDelegate::applicationWillTerminate);
}

DesktopSession::~DesktopSession() {
    LibraryViewModel::openSettings = {}; // a library view left over must not reach a session gone
}

void DesktopSession::launch() {
    Updater& updater = Updater::shared();
    updater.start();
    // The status item comes before the panel; its "Reposition on Notch" finds the panel when
    // chosen.
    m_statusItem = std::make_unique<StatusItem>([this] {
        return buildStatusMenu(m_delegate, [this] {
            if (m_panel)
                m_panel->controller().reposition();
        });
    });
    // A waiting update changes its row, so the menu is built anew (on a later turn of the event
    // loop, as the change may come while the old menu is in use).
    connect(&updater, &Updater::pendingVersionChanged, m_statusItem.get(), &StatusItem::rebuild,
            Qt::QueuedConnection);
    m_delegate.applicationDidFinishLaunching();
}

void DesktopSession::sendFeedback(bool idea) {
    // The player named as the user knows it: "Spotify", or the music player's own name.
    const QString source = m_delegate.player().sourceName();
    QString player;
    if (source == u"Spotify")
        player = m_bridge.displayName(Source::spotify);
    else if (source == u"Music")
        player = m_bridge.displayName(Source::music);
    composeFeedback(idea, currentFeedbackContext(Updater::versionText(), Theme::shared(), player));
}

void DesktopSession::openSettings(const QString& page) {
    if (!m_settings) {
        m_settings = std::make_unique<SettingsWindow>(Updater::versionText());
        connect(m_settings.get(), &SettingsWindow::setupAssistantRequested, &m_delegate,
                &AppDelegate::showSetup);
        connect(m_settings.get(), &SettingsWindow::feedbackRequested, this,
                &DesktopSession::sendFeedback);
    }
    m_settings->open(page);
}

void DesktopSession::showSetupWindow() {
    if (m_setup) {
        m_setup->show();
        return;
    }
    Preferences& prefs = Preferences::shared();
    // The first run's window cannot be closed away; a replay's can.
    const bool finishedBefore = prefs.boolValue(QStringLiteral("setupAssistantFinished"), false);
    SetupInputs inputs;
    inputs.musicPlayer = [this] {
        return std::pair{m_bridge.serviceFor(Source::music), m_bridge.displayName(Source::music)};
    };
    inputs.statusItemVisible = [this] { return m_statusVisibility.visible(); };
    inputs.spotifyConnected = [] { return SpotifyLibrary::shared().connected(); };
    inputs.openSpotifySettings = [this] { openSettings(QStringLiteral("Spotify")); };
    m_setup = new SetupWindow(makeSetupModel(prefs, std::move(inputs)), finishedBefore, this);
    connect(m_setup->model(), &SetupModel::finished, &m_delegate, &AppDelegate::finishSetup);
    // Closed by the user (a replay) or by the finish: the model and its timers go with it.
    connect(m_setup, &SetupWindow::closed, this, [this] {
        m_setup->deleteLater();
        m_setup = nullptr;
    });
    m_setup->show();
}

void DesktopSession::watchActivations() {
    // Which application comes to the front, for the focus log; installed with the controller.
    FocusLog::shared().setWatchInstaller([this] {
        m_workspace.setActivationHandler(
            [this](Workspace::Event event, const Workspace::Application& app) {
                FocusLog::shared().noteActivation(event == Workspace::Event::activated
                                                      ? QStringLiteral("ACTIVATED")
                                                      : QStringLiteral("UNHIDDEN"),
                                                  app.id, m_workspace.frontmost().id);
                m_playRequests->focusGuard().noteActivation(event, app);
            });
    });
}

void DesktopSession::buildPanel(AppDelegate& app) {
    Theme& theme = Theme::shared();
    NotchPanelController::Inputs inputs;
    inputs.motionSpeed = [&theme] { return theme.motionSpeed(); };
    inputs.showVisualizer = [&theme] { return theme.showVisualizer(); };
    inputs.positionID = [&theme] { return theme.positionID(); };
    // A tuning slider for the library's look opens the library while it is in use.
    VizConfig* viz = &VizConfig::shared();
    inputs.settingsTouchedAt = [viz] { return viz->lastControlTouch(); };
    inputs.settingsHolding = [viz] { return viz->holding(); };
    inputs.previewArea = [viz] { return viz->lastControlKey().value_or(QString()); };

    NotchPanelController::Outputs outputs;
    outputs.logLine = [](const QString& line) { FocusLog::shared().logLine(line); };
    // The panel's state goes out as the signal mirlState on the program's object (the
    // controller's own broadcast).
    PlayerState* player = &app.player();
    outputs.setPollingFast = [player](bool fast) {
        if (MusicController* controller = player->controller())
            controller->setPollingFast(fast);
    };

    m_panel = std::make_unique<NotchPanelHost>(app.player(), inputs, outputs);
    // The library's models, for the library view to bind.
    m_panel->setEngineSetup([](QQmlEngine& engine) { useLibraryModule(engine); });
    LibraryViewModel::openSettings = [this](const QString& page) { openSettings(page); };
    m_panel->setLibraryView(libraryViewSource());
    NotchPanelController* controller = &m_panel->controller();
    // The players are sampled from the player's start, after the panel was built, on the fast
    // cadence: once the first sample is in, the cadence follows the panel as it stands, or a
    // panel never opened would sample every second.
    connect(player, &PlayerState::started, controller, [player, controller] {
        MusicController* music = player->controller();
        connect(
            music, &MusicController::sampleApplied, controller,
            [music, controller] { music->setPollingFast(controller->layout()->expanded()); },
            Qt::SingleShotConnection);
    });
    connect(&theme, &Theme::positionIDChanged, controller,
            &NotchPanelController::themeGeometryChanged);
    connect(&theme, &Theme::showVisualizerChanged, controller,
            &NotchPanelController::visualizerToggled);
    // A right press on the panel pops up the status menu, built afresh each time.
    m_panel->setContextMenu([this, controller](QPoint at) {
        m_contextMenu = buildStatusMenu(m_delegate, [controller] { controller->reposition(); });
        m_contextMenu->popup(at);
        return true;
    });
    m_panel->show();
}

} // namespace MirlPlayer
