// Pictures of the setup assistant for the demo: every step, drawn by the real window over a
// fresh private home, with the players of the running session (the demo's mpv): the music
// step after connecting the player, the visualizer step once the probe heard it. Needs a
// display and the session's bus and PipeWire. Writes setup-<step>.png into the folder given.
#include "app/ShotApplication.h"
#include "core/Preferences.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "setup/SetupWindow.h"
#include "setup/SystemSetup.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QMetaEnum>

using namespace MirlPlayer;

namespace {

// Runs the event loop until `done` holds or `ms` pass.
bool waitFor(const std::function<bool()>& done, int ms) {
    QDeadlineTimer deadline(ms);
    while (!done() && !deadline.hasExpired())
        ShotApplication::settle(50);
    return done();
}

} // namespace

int main(int argc, char* argv[]) {
    ShotApplication app(argc, argv);

    MprisPlayerBridge bridge(Preferences::shared());
    SetupInputs inputs;
    inputs.musicPlayer = [&bridge] {
        return std::pair{bridge.serviceFor(Source::music), bridge.displayName(Source::music)};
    };
    inputs.statusItemVisible = [] { return false; }; // a virtual screen has no tray
    inputs.spotifyConnected = [] { return false; };
    ShotApplication::settle(500); // the bridge learns the players on the bus
    SetupWindow window(makeSetupModel(Preferences::shared(), std::move(inputs)), false);
    if (!window.window())
        return 1;
    SetupModel& model = *window.model();
    window.show();
    ShotApplication::settle(800); // the first page fades in once the window is on screen

    int failures = 0;
    const QMetaEnum steps = QMetaEnum::fromType<SetupModel::Step>();
    for (int i = 0; i < SetupModel::stepCount(); ++i) {
        model.goTo(i);
        ShotApplication::settle(400);
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
            ShotApplication::settle(300);
        }
        const QString file = QStringLiteral("setup-%1.png").arg(steps.valueToKey(i));
        if (!window.window()->grabWindow().save(app.path(file)))
            ++failures;
    }
    return failures;
}
