#include "app/AppDelegate.h"
#include "app/AudioEngineHost.h"
#include "app/FactoryPreferences.h"
#include "audio/AudioCaptureSettings.h"
#include "core/FocusLog.h"
#include "core/Logging.h"
#include "core/Preferences.h"
#include "look/LookTypes.h"
#include "look/Theme.h"
#include "panel/host/NotchPanelHost.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "platform/linux/service/MirlBusService.h"
#include "platform/linux/x11/X11Workspace.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"
#include "visualizers/VizConfig.h"

#include <QApplication>
#include <QQuickView>
#include <QQuickWindow>
#include <QSocketNotifier>
#include <QTimer>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

using namespace MirlPlayer;

namespace {

int signalPipe[2] = {-1, -1};

void onTerminationSignal(int) {
    const char byte = 1;
    [[maybe_unused]] auto n = ::write(signalPipe[1], &byte, 1);
}

// SIGINT and SIGTERM end the run loop normally, so the shutdown (log line, capture teardown)
// runs as it does for Quit.
void quitOnTerminationSignals(QCoreApplication& app) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [&app] {
        char byte;
        [[maybe_unused]] auto n = ::read(signalPipe[0], &byte, 1);
        app.quit();
    });
    std::signal(SIGINT, onTerminationSignal);
    std::signal(SIGTERM, onTerminationSignal);
}

} // namespace

int main(int argc, char* argv[]) {
    // Both must be chosen before the application object exists: a transparent panel needs an
    // alpha channel, and the visualizers draw with OpenGL.
    QQuickWindow::setDefaultAlphaBuffer(true);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("MIRL PRO"));
    QApplication::setDesktopFileName(AppDelegate::bundleIdentifier);
    QApplication::setQuitOnLastWindowClosed(false);
    installDebugLogFilter();
    quitOnTerminationSignals(app);

    seedFactoryPreferences(Preferences::shared(), QStringLiteral(":/DefaultPreferences.plist"));
    registerLookTypes(); // the theme reads the seeded look, so after seeding

    // The players over MPRIS, the panel, and the program's own name on the session bus.
    MprisPlayerBridge bridge(Preferences::shared());
    AppDelegate delegate(Preferences::shared(), &bridge);
    std::unique_ptr<NotchPanelHost> panel;
    MirlBusService busService(&delegate.player(), delegate.player().clock());
    busService.setAudioSources(&AudioCaptureSettings::shared(), delegate.player().eqStore());
    busService.registerOn(QDBusConnection::sessionBus());

    // Which application comes to the front, for the focus log (installed with the controller).
    X11Workspace workspace;
    FocusLog::shared().setWatchInstaller([&workspace] {
        workspace.setActivationHandler(
            [&workspace](Workspace::Event event, const Workspace::Application& app) {
                FocusLog::shared().noteActivation(event == Workspace::Event::activated
                                                      ? QStringLiteral("ACTIVATED")
                                                      : QStringLiteral("UNHIDDEN"),
                                                  app.id, workspace.frontmost().id);
            });
    });

    AppDelegate::Hooks hooks;
    hooks.buildPanel = [&panel, &busService](AppDelegate& app) {
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
        outputs.broadcast = [&busService](const MirlState& s) {
            busService.announcePanelState(s.expanded, QRectF(s.x, s.y, s.w, s.h));
        };
        PlayerState* player = &app.player();
        outputs.setPollingFast = [player](bool fast) {
            if (MusicController* controller = player->controller())
                controller->setPollingFast(fast);
        };
        panel = std::make_unique<NotchPanelHost>(app.player(), inputs, outputs);
        NotchPanelController* controller = &panel->controller();
        QObject::connect(&theme, &Theme::positionIDChanged, controller,
                         &NotchPanelController::themeGeometryChanged);
        QObject::connect(&theme, &Theme::showVisualizerChanged, controller,
                         &NotchPanelController::themeGeometryChanged);
        panel->show();
    };
    // The audio engine: the player's own output through PipeWire, started by the player gate.
    AudioEngineHost audio(bridge);
    delegate.player().setAudioEngineStarter(
        [&audio](PlayerState& state) { audio.startFor(state); });
    hooks.stopAudioEngine = [&audio](PlayerState&) { audio.stop(); };
    delegate.setHooks(std::move(hooks));
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);
    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    return app.exec();
}
