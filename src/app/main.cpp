#include "app/AppDelegate.h"
#include "app/DesktopSession.h"
#include "app/FactoryPreferences.h"
#include "core/FocusLog.h"
#include "core/Logging.h"
#include "core/Preferences.h"
#include "look/LookTypes.h"
#include "platform/linux/service/MirlBusService.h"
#include "platform/linux/wayland/PanelBackend.h"
#include "playback/SpotifyQueue.h"
#include "visualizers/views/VisualizerTypes.h"

#include <QApplication>
#include <QLoggingCategory>
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
    requestVisualizerGraphics();
    // Every panel backend of this build is an X window, in a Wayland session through XWayland;
    // left alone, Qt would pick its Wayland platform there.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    const PanelBackendChoice& backend = PanelBackendChoice::forThisProcess();

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("MIRL PRO"));
    QApplication::setDesktopFileName(AppDelegate::bundleIdentifier);
    QApplication::setQuitOnLastWindowClosed(false);
    installDebugLogFilter();
    const QString backendLine = QStringLiteral("Panel backend %1: %2")
                                    .arg(panelBackendName(backend.backend), backend.reason);
    qCInfo(lcCore).noquote() << backendLine;

    // One running copy: a second launch asks the first to do what opening it again does, and
    // leaves before it touches anything.
    if (!MirlBusService::claimName(QDBusConnection::sessionBus())) {
        MirlBusService::askRunningCopyToReopen(QDBusConnection::sessionBus());
        return 0;
    }
    quitOnTerminationSignals(app);
    FocusLog::shared().logLine(backendLine);

    seedFactoryPreferences(Preferences::shared(), QStringLiteral(":/DefaultPreferences.plist"));
    registerLookTypes(); // the theme reads the seeded look, so after seeding
    SpotifyQueue::registerForQml();

    DesktopSession session;
    QTimer::singleShot(0, &session, &DesktopSession::launch);
    return app.exec();
}
