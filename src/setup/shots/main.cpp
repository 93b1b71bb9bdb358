// Pictures of the setup assistant for the demo: every step, drawn by the real window over a
// fresh private home, with the players of the running session (the demo's mpv): the music
// step after connecting the player, the visualizer step once the probe heard it. Needs a
// display and the session's bus and PipeWire. Writes setup-<step>.png into the folder given.
#include "core/Preferences.h"
#include "core/ShotSession.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "setup/SetupWindow.h"
#include "setup/SystemSetup.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QMetaEnum>
#include <QTemporaryDir>

using namespace MirlPlayer;
using MirlPlayer::ShotSession::settle;

namespace {

// Runs the event loop until `done` holds or `ms` pass.
bool waitFor(const std::function<bool()>& done, int ms) {
    QDeadlineTimer deadline(ms);
    while (!done() && !deadline.hasExpired())
        settle(50);
    return done();
}

} // namespace

int main(int argc, char* argv[]) {
    // Never the user's own settings: everything the window reads lives in a throwaway home.
    QTemporaryDir home;
    ShotSession::usePrivateHome(home);

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("MIRL PRO"));
    const QDir out(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QDir::currentPath());

    MprisPlayerBridge bridge(Preferences::shared());
    SetupInputs inputs;
    inputs.musicPlayer = [&bridge] {
        return std::pair{bridge.serviceFor(Source::music), bridge.displayName(Source::music)};
    };
    inputs.statusItemVisible = [] { return false; }; // a virtual screen has no tray
    inputs.spotifyConnected = [] { return false; };
    settle(500); // the bridge learns the players on the bus
    SetupWindow window(makeSetupModel(Preferences::shared(), std::move(inputs)), false);
    if (!window.window())
        return 1;
    SetupModel& model = *window.model();
    window.show();
    settle(800); // the first page fades in once the window is on screen

    int failures = 0;
    const QMetaEnum steps = QMetaEnum::fromType<SetupModel::Step>();
    for (int i = 0; i < SetupModel::stepCount(); ++i) {
        model.goTo(i);
        settle(400);
        if (model.step() == SetupModel::Step::music) {
            const QString music = model.apps().constLast().toMap().value("id").toString();
            model.ask(music);
            if (!waitFor([&] { return model.access(music) == MusicAutomation::Access::allowed; },
                         20000)) {
                qWarning("the music player did not answer");
                ++failures;
            }
        } else if (model.step() == SetupModel::Step::visualizer) {
            model.setLiveVisualizer(true);
            model.startProbe();
            if (!waitFor([&] { return model.probe()->heard(); }, 10000)) {
                qWarning("the probe heard nothing");
                ++failures;
            }
            settle(300);
        }
        const QString file = QStringLiteral("setup-%1.png").arg(steps.valueToKey(i));
        if (!window.window()->grabWindow().save(out.filePath(file)))
            ++failures;
    }
    return failures;
}
