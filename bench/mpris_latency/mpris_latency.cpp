// How long a player's change takes to reach the now-playing model: from mpv's PropertiesChanged
// (PlaybackStatus) to PlayerState's isPlayingChanged, over 50 play/pause toggles of a real mpv in
// the private test environment. The baseline is one bare GetAll round trip to the same player,
// the least any sample can cost.
//
// Uses the environment named by MIRL_TEST_ENV when there is one, otherwise brings one up with
// scripts/test-env and takes it down again.

#include "core/Preferences.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "playback/PlayerState.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <optional>
#include <vector>

using namespace MirlPlayer;

namespace {

const QString player = QStringLiteral("org.mpris.MediaPlayer2.mpv");
const QString mprisPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

// Brings the private environment up (before the application object exists, so that the session
// bus is the environment's) and takes it down at the end.
class Environment {
public:
    Environment() {
        if (!qEnvironmentVariableIsEmpty("MIRL_TEST_ENV"))
            return;
        QProcess up;
        up.start(QStringLiteral(MIRL_SOURCE_DIR "/scripts/test-env"),
                 {QStringLiteral("up"), m_file});
        up.waitForFinished(30000);
        static const QRegularExpression line(QStringLiteral("^export ([A-Z_]+)='([^']*)'$"),
                                             QRegularExpression::MultilineOption);
        auto it = line.globalMatch(QString::fromUtf8(up.readAllStandardOutput()));
        while (it.hasNext()) {
            const auto m = it.next();
            qputenv(m.captured(1).toLatin1(), m.captured(2).toLocal8Bit());
        }
        m_owned = true;
    }
    ~Environment() {
        if (m_owned)
            QProcess::execute(QStringLiteral(MIRL_SOURCE_DIR "/scripts/test-env"),
                              {QStringLiteral("down"), m_file});
    }

private:
    QTemporaryDir m_dir;
    QString m_file = m_dir.filePath(QStringLiteral("env.sh"));
    bool m_owned = false;
};

// Notes when the player announces a new PlaybackStatus. It runs on a thread and a connection of
// its own, so that its note is not delayed behind the GUI thread's work (or its wake-up).
class Listener : public QObject {
    Q_OBJECT
public:
    static constexpr qint64 none = -1;
    std::atomic<qint64> announcedAt{none};
    const QElapsedTimer* clock = nullptr;
public Q_SLOTS:
    void changed(const QString& interface, const QVariantMap& properties, const QStringList&) {
        qint64 expected = none;
        if (interface == playerInterface && properties.contains(QStringLiteral("PlaybackStatus")))
            announcedAt.compare_exchange_strong(expected, clock->nsecsElapsed());
    }
};

double percentile(std::vector<double> values, double p) {
    std::sort(values.begin(), values.end());
    const auto index =
        size_t(std::clamp(p * double(values.size() - 1) + 0.5, 0.0, double(values.size() - 1)));
    return values[index];
}

// Runs the event loop until `done` or `ms` milliseconds passed.
template <typename Done> bool waitFor(Done done, int ms) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > ms)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}

} // namespace

int main(int argc, char* argv[]) {
    Environment environment;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTemporaryDir dir;
    Preferences prefs(dir.filePath(QStringLiteral("bench.conf")));

    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        std::fprintf(stderr, "mpris_latency: no session bus\n");
        return 1;
    }
    // The commands come over a connection of their own, as from another process.
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    const QDBusConnection remote = QDBusConnection::connectToBus(address, QStringLiteral("remote"));

    QElapsedTimer clock;
    clock.start();
    QThread listenerThread;
    listenerThread.start();
    Listener listener;
    listener.clock = &clock;
    listener.moveToThread(&listenerThread);
    QMetaObject::invokeMethod(
        &listener,
        [&] {
            QDBusConnection::connectToBus(address, QStringLiteral("listener"))
                .connect(QString(), mprisPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                         QStringLiteral("PropertiesChanged"), &listener,
                         SLOT(changed(QString, QVariantMap, QStringList)));
        },
        Qt::BlockingQueuedConnection);

    MprisPlayerBridge bridge(prefs);
    PlayerState state(&bridge);
    state.start();
    if (!waitFor([&] { return state.isPlaying(); }, 5000)) {
        std::fprintf(stderr, "mpris_latency: the player is not playing\n");
        return 1;
    }

    std::optional<qint64> appliedAt;
    QObject::connect(&state, &PlayerState::isPlayingChanged, [&] {
        if (!appliedAt)
            appliedAt = clock.nsecsElapsed();
    });

    // Baseline: one GetAll round trip.
    std::vector<double> roundTrips;
    for (int i = 0; i < 50; ++i) {
        QDBusMessage getAll = QDBusMessage::createMethodCall(
            player, mprisPath, QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("GetAll"));
        getAll << playerInterface;
        const qint64 start = clock.nsecsElapsed();
        remote.call(getAll, QDBus::Block, 5000);
        roundTrips.push_back(double(clock.nsecsElapsed() - start) / 1e6);
    }

    constexpr int toggles = 50;
    std::vector<double> latencies;
    int missed = 0;
    for (int i = 0; i < toggles; ++i) {
        listener.announcedAt = Listener::none;
        appliedAt.reset();
        const bool wasPlaying = state.isPlaying();
        remote.asyncCall(QDBusMessage::createMethodCall(player, mprisPath, playerInterface,
                                                        QStringLiteral("PlayPause")));
        const bool seen = waitFor(
            [&] {
                return listener.announcedAt != Listener::none && appliedAt &&
                       state.isPlaying() != wasPlaying;
            },
            3000);
        if (!seen) {
            ++missed;
            continue;
        }
        latencies.push_back(double(std::max<qint64>(0, *appliedAt - listener.announcedAt)) / 1e6);
        waitFor([] { return false; }, 30); // let the player settle
    }
    listenerThread.quit();
    listenerThread.wait();
    if (!state.isPlaying())
        remote.call(QDBusMessage::createMethodCall(player, mprisPath, playerInterface,
                                                   QStringLiteral("Play")));
    if (latencies.empty()) {
        std::fprintf(stderr, "mpris_latency: no toggle reached the model\n");
        return 1;
    }

    const double median = percentile(latencies, 0.5);
    const double p95 = percentile(latencies, 0.95);
    const double baseline = percentile(roundTrips, 0.5);
    std::printf("toggles measured: %zu of %d\n", latencies.size(), toggles);
    std::printf("PropertiesChanged -> PlayerState: median %.2f ms, p95 %.2f ms, max %.2f ms\n",
                median, p95, percentile(latencies, 1.0));
    std::printf("baseline GetAll round trip: median %.2f ms\n", baseline);
    std::printf("ratio to baseline: %.2f\n", median / baseline);
    std::printf("{\"bench\":\"mpris_latency\",\"toggles\":%zu,\"missed\":%d,\"median_ms\":%.3f,"
                "\"p95_ms\":%.3f,"
                "\"baseline_getall_ms\":%.3f,\"ratio_to_getall\":%.2f}\n",
                latencies.size(), missed, median, p95, baseline, median / baseline);
    return 0;
}

#include "mpris_latency.moc"
