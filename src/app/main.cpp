#include "app/AppDelegate.h"
#include "app/AudioEngineHost.h"
#include "app/FactoryPreferences.h"
#include "core/Logging.h"
#include "core/Preferences.h"
#include "look/LookTypes.h"
#include "panel/SkeletonPanel.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "platform/linux/service/MirlBusService.h"
#include "playback/PlayerState.h"

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
    std::unique_ptr<SkeletonPanel> panel;
    MirlBusService busService(&delegate.player(), delegate.player().clock());
    busService.registerOn(QDBusConnection::sessionBus());
    AppDelegate::Hooks hooks;
    hooks.buildPanel = [&panel, &busService](AppDelegate& app) {
        panel = std::make_unique<SkeletonPanel>(app.player());
        QObject::connect(
            panel.get(), &SkeletonPanel::expandedChanged, &busService, [&panel, &busService] {
                const QRectF shape = panel->expanded() ? panel->cardRect() : panel->pillRect();
                const QPointF origin = panel->window()->position();
                busService.announcePanelState(panel->expanded(), shape.translated(origin));
            });
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
