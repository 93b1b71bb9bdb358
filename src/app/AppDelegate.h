#pragma once

#include "core/Clock.h"

#include <QObject>
#include <functional>
#include <memory>

namespace MirlPlayer {

class PlayerBridge;
class PlayerState;
class Preferences;

// Owns the long-lived objects and runs the launch sequence and the shutdown. The player stays
// inert until the gate PlayerState::start() runs: at launch when setup is complete, otherwise
// when the setup assistant finishes.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    static inline const QString bundleIdentifier = QStringLiteral("com.kestrova.mirlpro");

    AppDelegate(Preferences& prefs, PlayerBridge* bridge, Clock& clock = Clock::system(),
                QObject* parent = nullptr);
    ~AppDelegate() override;

    PlayerState& player() { return *m_player; }

    // The windows and views of later subsystems plug in here before launch.
    struct Hooks {
        std::function<void(AppDelegate&)> buildPanel;          // shows the panel
        std::function<void(AppDelegate&)> showSetupWindow;     // the setup assistant
        std::function<bool()> setupWindowOpen;                 // whether it is showing
        std::function<void()> closeSetupWindow;                // at the end of setup
        std::function<void()> stopSetupProbe;                  // on quit, while it exists
        std::function<void(const QString& page)> openSettings; // the settings window
        std::function<void(PlayerState&)> stopAudioEngine;     // on quit
        std::function<void(bool idea)> composeFeedback;        // the pre-filled mail
    };
    void setHooks(Hooks hooks) { m_hooks = std::move(hooks); }

    void applicationDidFinishLaunching();
    void applicationWillTerminate();
    // The user opened the program again while it runs.
    void applicationShouldHandleReopen();
    void showSetup();
    void openSettings(const QString& page = {});
    // The two feedback mails of the status menu.
    void reportProblem();
    void shareIdea();
    // The end of setup, with the user's visualizer choice: stores it, marks setup complete and
    // the assistant finished, closes the assistant and opens the gate to the players.
    void finishSetup(bool liveVisualizer);

    bool launched() const { return m_launched; }

Q_SIGNALS:
    void setupShown();

private:
    Preferences& m_prefs;
    std::unique_ptr<PlayerState> m_player;
    Hooks m_hooks;
    bool m_launched = false;
};

} // namespace MirlPlayer
