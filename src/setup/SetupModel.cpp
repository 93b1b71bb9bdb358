#include "setup/SetupModel.h"

#include <QDBusConnection>
#include <QPointer>
#include <QThread>
#include <QVariantMap>
#include <cmath>

namespace MirlPlayer {

namespace {

using MusicAutomation::ProbeResult;

int milliseconds(double seconds) {
    return int(std::lround(seconds * 1000));
}

} // namespace

SetupModel::Services SetupModel::systemServices(std::function<App()> musicPlayer) {
    Services services;
    services.apps = [musicPlayer] { return QList<App>{MusicAutomation::spotify(), musicPlayer()}; };
    const auto places =
        std::make_shared<const MusicAutomation::Places>(MusicAutomation::Places::system());
    services.status = [places](const App& app) {
        return MusicAutomation::status(app, QDBusConnection::sessionBus(), *places);
    };
    services.probe = [](const App& app, double timeout) {
        return MusicAutomation::probe(app.id, timeout, QDBusConnection::sessionBus());
    };
    services.running = [](const App& app) {
        return MusicAutomation::isRunning(app.id, QDBusConnection::sessionBus());
    };
    services.launch = [places](const App& app) { return MusicAutomation::launch(app, *places); };
    return services;
}

SerialQueue& SetupModel::queue() {
    static SerialQueue* queue = new SerialQueue(QStringLiteral("com.kestrova.mirlpro.setup"));
    return *queue;
}

SerialQueue& SetupModel::askQueue() {
    static SerialQueue* queue = new SerialQueue(QStringLiteral("com.kestrova.mirlpro.setup.ask"));
    return *queue;
}

SetupModel::SetupModel(Services services, std::unique_ptr<AudioProbe> probe, bool liveVisualizer,
                       QObject* parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_liveVisualizer(liveVisualizer)
    , m_probe(std::move(probe)) {
    m_refreshTimer.setInterval(milliseconds(m_services.refreshInterval));
    connect(&m_refreshTimer, &QTimer::timeout, this, &SetupModel::refresh);
    if (m_services.apps)
        m_apps = m_services.apps();
    // The rows are there before the first refresh answers, which is asked for at once, so
    // that the music step opens with the truth.
    for (const App& app : std::as_const(m_apps))
        m_access.insert(app.id, Access::notRunning);
    refresh();
    // The probe listens to a connected player first, else to whichever of them plays.
    auto candidates = [this] {
        QStringList allowed, others;
        for (const App& app : std::as_const(m_apps))
            (access(app.id) == Access::allowed ? allowed : others).append(app.id);
        m_probe->setCandidates(allowed + others);
    };
    candidates();
    connect(this, &SetupModel::accessChanged, this, candidates);
    auto probeText = [this] { Q_EMIT probeTextChanged(); };
    connect(m_probe.get(), &AudioProbe::heardChanged, this, probeText);
    connect(m_probe.get(), &AudioProbe::runningChanged, this, probeText);
    connect(m_probe.get(), &AudioProbe::failedChanged, this, probeText);
}

SetupModel::~SetupModel() {
    shutDown();
}

QStringList SetupModel::railLabels() {
    return {QStringLiteral("Welcome"),           QStringLiteral("Find your player"),
            QStringLiteral("Playback controls"), QStringLiteral("Live visualizer"),
            QStringLiteral("Spotify in MIRL"),   QStringLiteral("Play & like"),
            QStringLiteral("Quick Access"),      QStringLiteral("Ready to listen")};
}

QString SetupModel::title() const {
    static const QStringList titles{QStringLiteral("Welcome to MIRL PRO"),
                                    QStringLiteral("Where to find MIRL"),
                                    QStringLiteral("Connect your music"),
                                    QStringLiteral("Live visualizer"),
                                    QStringLiteral("Your Spotify library, inside MIRL"),
                                    QStringLiteral("One click to play. Two to keep it."),
                                    QStringLiteral("Your favourites, one move away."),
                                    QStringLiteral("You're all set")};
    return titles.value(stepIndex());
}

QString SetupModel::primaryText() const {
    switch (m_step) {
    case Step::welcome:
        return QStringLiteral("Get Started");
    case Step::library:
        return QStringLiteral("Continue to the tour");
    case Step::done:
        return QStringLiteral("Start listening");
    default:
        return QStringLiteral("Continue");
    }
}

QVariantList SetupModel::apps() const {
    QVariantList rows;
    for (const App& app : m_apps) {
        const Access state = access(app.id);
        QStringList actions = MusicAutomation::actions(state);
        if (!canOpenSettings(QStringLiteral("automation")))
            actions.removeIf([](const QString& action) { return action.contains(u"Settings"); });
        rows.append(
            QVariantMap{{QStringLiteral("id"), app.id},
                        {QStringLiteral("name"), app.name},
                        {QStringLiteral("state"), int(state)},
                        {QStringLiteral("allowed"), state == Access::allowed},
                        {QStringLiteral("status"), MusicAutomation::statusText(state, app.name)},
                        {QStringLiteral("actions"), MusicAutomation::actions(state)}});
    }
    return rows;
}

void SetupModel::setLiveVisualizer(bool live) {
    if (live == m_liveVisualizer)
        return;
    m_liveVisualizer = live;
    // "Artwork only" needs no listening at all.
    if (!live)
        m_probe->stop();
    Q_EMIT liveVisualizerChanged();
}

QString SetupModel::probeText() const {
    if (m_probe->heard())
        return QStringLiteral("MIRL PRO can hear your music.");
    if (m_probe->failed())
        return QStringLiteral("Couldn't start the audio check.");
    if (m_probe->running())
        return QStringLiteral("Play a song. When the bar moves, it works.");
    return QStringLiteral("Allow MIRL PRO to hear your music.");
}

bool SetupModel::statusItemVisible() const {
    return !m_services.statusItemVisible || m_services.statusItemVisible();
}

bool SetupModel::spotifyConnected() const {
    return m_services.spotifyConnected && m_services.spotifyConnected();
}

void SetupModel::go(Step step) {
    if (step != m_step) {
        m_step = step;
        Q_EMIT stepChanged();
    }
    m_refreshTimer.stop();
    if (step == Step::visualizer)
        return; // the probe keeps running
    if (step == Step::music) {
        refresh();
        m_refreshTimer.start();
    }
    m_probe->stop();
}

void SetupModel::next() {
    if (m_step == Step::done) {
        Q_EMIT finished(m_liveVisualizer);
        return;
    }
    go(Step(stepIndex() + 1));
}

void SetupModel::back() {
    if (m_step != Step::welcome)
        go(Step(stepIndex() - 1));
}

void SetupModel::refresh() {
    // The player of the part "Music" is whichever the rule picks now.
    if (m_services.apps) {
        const QList<App> apps = m_services.apps();
        if (apps != m_apps) {
            m_apps = apps;
            Q_EMIT accessChanged();
        }
    }
    if (!m_services.status)
        return;
    queue().async([self = QPointer(this), apps = m_apps, status = m_services.status] {
        QList<std::pair<QString, Access>> states;
        for (const App& app : apps)
            states.append({app.id, status(app)});
        onMain([self, states] {
            if (self)
                self->applyRefresh(states);
        });
    });
}

void SetupModel::applyRefresh(const QList<std::pair<QString, Access>>& states) {
    for (const auto& [id, state] : states) {
        const Access stored = access(id);
        if (stored == Access::asking)
            continue;
        // A player that answered stays connected: the state read from outside lags the proof.
        if (m_proven.contains(id) && state != Access::denied)
            continue;
        // The text of a missed answer stays until the user acts.
        if (stored == Access::noAnswer && state == Access::needsAsk)
            continue;
        store(id, state);
    }
}

void SetupModel::store(const QString& id, Access access) {
    if (m_access.value(id, Access::notInstalled) == access && m_access.contains(id))
        return;
    m_access.insert(id, access);
    Q_EMIT accessChanged();
}

void SetupModel::ask(const QString& id) {
    const auto app = std::find_if(m_apps.cbegin(), m_apps.cend(),
                                  [&id](const App& candidate) { return candidate.id == id; });
    if (app == m_apps.cend())
        return;
    // One ask at a time.
    for (Access state : std::as_const(m_access))
        if (state == Access::asking)
            return;
    store(id, Access::asking);
    m_askToken = QUuid::createUuid();
    const QUuid token = m_askToken;

    QTimer::singleShot(milliseconds(m_services.askExpiry), this, [this, id, token] {
        if (m_askToken == token && access(id) == Access::asking) {
            m_askToken = QUuid::createUuid();
            store(id, Access::noAnswer);
        }
    });

    askQueue().async([self = QPointer(this), app = *app, token, services = m_services] {
        if (services.running && !services.running(app) && services.launch && services.launch(app)) {
            // Opened in the background; wait until it is on the bus, then let it settle.
            for (int i = 0; i < services.launchPolls && !services.running(app); ++i)
                QThread::msleep(quint32(milliseconds(services.launchPoll)));
            QThread::msleep(quint32(milliseconds(services.launchSettle)));
        }
        const ProbeResult result =
            services.probe ? services.probe(app, services.probeTimeout) : ProbeResult::unknown;
        Access final = Access::noAnswer;
        bool proven = result == ProbeResult::answered;
        if (result == ProbeResult::denied) {
            final = Access::denied;
        } else if (result == ProbeResult::unknown && services.status) {
            const Access now = services.status(app);
            proven = now == Access::allowed;
            final = now == Access::needsAsk ? Access::noAnswer : now;
        }
        if (proven)
            final = Access::allowed;
        onMain([self, id = app.id, token, final, proven] {
            if (!self)
                return;
            if (proven)
                self->m_proven.insert(id);
            // A stale answer (the expiry came first, or another ask began) is dropped.
            if (self->m_askToken != token)
                return;
            self->m_askToken = QUuid::createUuid();
            self->store(id, final);
        });
    });
}

void SetupModel::openSettings(const QString& what) {
    if (m_services.openSettings)
        m_services.openSettings(what);
}

bool SetupModel::canOpenSettings(const QString& what) const {
    return m_services.canOpenSettings && m_services.canOpenSettings(what);
}

void SetupModel::shutDown() {
    m_refreshTimer.stop();
    m_probe->stop();
}

} // namespace MirlPlayer
