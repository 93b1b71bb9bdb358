#pragma once

#include "core/SerialQueue.h"
#include "setup/AudioProbe.h"
#include "setup/MusicAutomation.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QUuid>
#include <QVariantList>
#include <functional>
#include <memory>

namespace MirlPlayer {

// The setup assistant's state: the step, each player's access with its proof, the visualizer
// choice and the audio probe. The players are asked on queues of their own, so the window
// never waits for them; everything published is written on the GUI thread.
class SetupModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(int step READ stepIndex NOTIFY stepChanged)
    Q_PROPERTY(int stepCount READ stepCount CONSTANT)
    Q_PROPERTY(QStringList railLabels READ railLabels CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY stepChanged)
    Q_PROPERTY(QString primaryText READ primaryText NOTIFY stepChanged)
    Q_PROPERTY(QVariantList apps READ apps NOTIFY accessChanged)
    Q_PROPERTY(bool liveVisualizer READ liveVisualizer WRITE setLiveVisualizer NOTIFY
                   liveVisualizerChanged)
    Q_PROPERTY(QString probeText READ probeText NOTIFY probeTextChanged)
    Q_PROPERTY(AudioProbe* probe READ probe CONSTANT)
    Q_PROPERTY(bool statusItemVisible READ statusItemVisible NOTIFY stepChanged)
    Q_PROPERTY(bool spotifyConnected READ spotifyConnected NOTIFY stepChanged)
public:
    enum class Step { welcome, menuBar, music, visualizer, library, tips, quickAccess, done };
    Q_ENUM(Step)
    using Access = MusicAutomation::Access;
    using App = MusicAutomation::App;

    // What the model needs from the system.
    struct Services {
        std::function<QList<App>()> apps;                                      // GUI thread
        std::function<Access(const App&)> status;                              // setup queue
        std::function<MusicAutomation::ProbeResult(const App&, double)> probe; // ask queue
        std::function<bool(const App&)> running;                               // ask queue
        std::function<bool(const App&)> launch;                                // ask queue
        std::function<bool()> statusItemVisible;
        std::function<bool()> spotifyConnected;
        // "automation" (a player's permission), "audio" (recording), "spotify" (the account).
        std::function<void(const QString& what)> openSettings;
        std::function<bool(const QString& what)> canOpenSettings;
        double refreshInterval = 2.0;
        double askExpiry = 30.0;
        double launchPoll = 0.25;
        int launchPolls = 40;
        double launchSettle = 2.0;
        double probeTimeout = 15.0;
    };
    // The players on the session bus: Spotify, and `musicPlayer`, the player of the part
    // "Music" now. The caller adds what the rest of the program knows.
    static Services systemServices(std::function<App()> musicPlayer);

    SetupModel(Services services, std::unique_ptr<AudioProbe> probe, bool liveVisualizer,
               QObject* parent = nullptr);
    ~SetupModel() override;

    Step step() const { return m_step; }
    int stepIndex() const { return int(m_step); }
    static int stepCount() { return 8; }
    static QStringList railLabels();
    QString title() const;
    QString primaryText() const;
    QVariantList apps() const;
    Access access(const QString& id) const { return m_access.value(id, Access::notInstalled); }
    bool liveVisualizer() const { return m_liveVisualizer; }
    void setLiveVisualizer(bool live);
    QString probeText() const;
    AudioProbe* probe() const { return m_probe.get(); }
    bool statusItemVisible() const;
    bool spotifyConnected() const;

    void go(Step step);
    Q_INVOKABLE void goTo(int step) { go(Step(std::clamp(step, 0, stepCount() - 1))); }
    // The primary button: the next step, and on the last one the finish.
    Q_INVOKABLE void next();
    Q_INVOKABLE void back();
    // "Allow" and "Try Again".
    Q_INVOKABLE void ask(const QString& id);
    // A row's or a page's settings button: `what` as in Services::openSettings.
    Q_INVOKABLE void openSettings(const QString& what);
    // Whether this desktop has a place to send the user for `what`; without one the button
    // is left out and the text alone says what to do.
    Q_INVOKABLE bool canOpenSettings(const QString& what) const;
    Q_INVOKABLE void startProbe() { m_probe->start(); }
    // Refreshes the players' states now (the music step does it every 2 s by itself).
    void refresh();
    // Stops the timer and the probe, as the window closes.
    void shutDown();

Q_SIGNALS:
    void stepChanged();
    void accessChanged();
    void liveVisualizerChanged();
    void probeTextChanged();
    // The primary button on the last step, with the visualizer choice.
    void finished(bool live);

private:
    void applyRefresh(const QList<std::pair<QString, Access>>& states);
    void store(const QString& id, Access access);
    // The refresh and the asking run on queues that live as long as the process, so that a
    // window closing during a long ask never waits for it.
    static SerialQueue& queue();
    static SerialQueue& askQueue();

    Services m_services;
    Step m_step = Step::welcome;
    QHash<QString, Access> m_access;
    QList<App> m_apps;
    bool m_liveVisualizer;
    std::unique_ptr<AudioProbe> m_probe;
    QTimer m_refreshTimer;
    QSet<QString> m_proven;
    QUuid m_askToken = QUuid::createUuid();
};

} // namespace MirlPlayer
