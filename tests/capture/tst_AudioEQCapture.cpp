// The capture supervisor of AudioEQ against a fake capture backend and a manual clock.
#include "audio/AudioEQ.h"
#include "audio/EQTuning.h"
#include "core/Preferences.h"
#include "platform/SleepWatch.h"
#include "visualizers/VizConfig.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <map>
#include <numbers>

using namespace MirlPlayer;

namespace {

const QString idleText = QStringLiteral("Play a song to check audio capture.");
const QString failureText = QStringLiteral(
    "Couldn’t start audio capture. Check audio permission, then choose Check Again.");
const QString silenceText = QStringLiteral(
    "No audio detected. Play a song, check audio permission, then choose Check Again.");

class FakeCapture final : public CaptureBackend {
public:
    QStringList calls;
    std::map<qint64, quint64> objects; // pid → audio object
    std::optional<Failure> failNextStart;
    CaptureFormat format{48000, 2, 32, true, true};
    quint64 nextID = 1;
    quint64 running = 0;

    void removeStale() override { calls << QStringLiteral("removeStale"); }
    quint64 audioObject(qint64 pid) override {
        calls << QStringLiteral("audioObject %1").arg(pid);
        const auto it = objects.find(pid);
        return it == objects.end() ? 0 : it->second;
    }
    StartResult startCapture(quint64 object) override {
        calls << QStringLiteral("startCapture %1").arg(object);
        if (failNextStart)
            return *std::exchange(failNextStart, std::nullopt);
        running = nextID++;
        return Started{format, running};
    }
    void teardown() override {
        calls << QStringLiteral("teardown");
        running = 0;
    }
    int count(const QString& prefix) const {
        int n = 0;
        for (const QString& call : calls)
            n += call.startsWith(prefix) ? 1 : 0;
        return n;
    }
    void deliver(const std::vector<float>& interleaved) {
        CaptureBlock block;
        block.format = format;
        block.frames = quint32(interleaved.size() / format.channels);
        block.samples = interleaved.data();
        deliverBlock(std::move(block));
    }
    void end(quint64 id) { deliverEnded(id); }
    bool wanted = false;
    void setWanted(bool want) override { wanted = want; }
    void changed() { deliverChanged(); }
};

class FakeSleepWatch final : public SleepWatch {
public:
    int observed = 0;
    int stopped = 0;
    std::function<void()> woke;
    void observe(std::function<void()> handler) override {
        ++observed;
        woke = std::move(handler);
    }
    void stopObserving() override {
        ++stopped;
        woke = nullptr;
    }
};

struct Status {
    QString text;
    bool isError;
    bool operator==(const Status&) const = default;
};

} // namespace

class tst_AudioEQCapture : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<VizConfig> m_viz;
    ManualClock m_clock;
    EQTuning m_tuning;
    FakeCapture m_capture;
    FakeSleepWatch m_sleep;
    std::unique_ptr<AudioEQ> m_eq;
    std::map<Source, qint64> m_pids;
    QString m_musicName;
    QList<Status> m_statuses;
    int m_flatStereo = 0;

    void advance(double seconds) {
        m_clock.advance(seconds);
        m_eq->pollTimers();
    }
    Status lastStatus() const { return m_statuses.isEmpty() ? Status{} : m_statuses.last(); }

    // Spotify runs as pid 100 and plays through object 7; capture is wanted.
    void startCapturing() {
        m_pids[Source::spotify] = 100;
        m_capture.objects[100] = 7;
        m_eq->start();
        m_eq->setCapture(true, false);
        QCOMPARE(m_eq->tappedPID(), qint64(100));
        m_capture.calls.clear();
        m_statuses.clear();
    }

private Q_SLOTS:
    void init() {
        m_prefs = std::make_unique<Preferences>(m_dir.filePath(QStringLiteral("prefs.conf")));
        m_viz = std::make_unique<VizConfig>(*m_prefs, m_clock);
        m_clock.set(1000);
        m_capture = FakeCapture{};
        m_sleep = FakeSleepWatch{};
        m_pids.clear();
        m_musicName.clear();
        m_statuses.clear();
        m_flatStereo = 0;
        m_eq = std::make_unique<AudioEQ>(*m_prefs, *m_viz, m_clock, &m_tuning);
        m_eq->onStatus = [this](const QString& text, bool isError) {
            m_statuses.append({text, isError});
        };
        m_eq->onStereo = [this](const StereoCurve& curve) {
            if (std::all_of(curve.begin(), curve.end(), [](float v) { return v == 0.0f; }))
                ++m_flatStereo;
        };
        m_eq->setCaptureBackend(&m_capture);
        m_eq->setSleepWatch(&m_sleep);
        m_eq->setPlayerLookup({[this](Source source) -> std::optional<qint64> {
                                   const auto it = m_pids.find(source);
                                   if (it == m_pids.end())
                                       return std::nullopt;
                                   return it->second;
                               },
                               [this](Source source) {
                                   return source == Source::music ? m_musicName
                                                                  : QStringLiteral("Spotify");
                               }});
    }
    void cleanup() {
        m_eq.reset();
        m_viz.reset();
        m_prefs.reset();
    }

    void statusTellsWhereTheCaptureStands_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("musicName");
        QTest::addColumn<bool>("runs");
        QTest::addColumn<bool>("hasObject");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("player closed") << "Spotify" << QString() << false << false
                                       << QStringList{"Open Spotify and play a song."};
        QTest::newRow("player without output yet")
            << "Spotify" << QString() << true << false
            << QStringList{"Waiting for Spotify to play audio…"};
        QTest::newRow("capture started")
            << "Spotify" << QString() << true << true
            << QStringList{"Connecting to Spotify…", "Waiting for audio from Spotify…"};
        QTest::newRow("music part without a name")
            << "Music" << QString() << false << false
            << QStringList{"Open your music player and play a song."};
        QTest::newRow("music part named by its player")
            << "Music" << QStringLiteral("Lollypop") << true << true
            << QStringList{"Connecting to Lollypop…", "Waiting for audio from Lollypop…"};
    }
    void statusTellsWhereTheCaptureStands() {
        QFETCH(QString, source);
        QFETCH(QString, musicName);
        QFETCH(bool, runs);
        QFETCH(bool, hasObject);
        QFETCH(QStringList, expected);
        m_musicName = musicName;
        const Source part = source == u"Music" ? Source::music : Source::spotify;
        if (runs)
            m_pids[part] = 321;
        if (hasObject)
            m_capture.objects[321] = 9;
        m_eq->setSource(source);
        m_eq->start();
        QCOMPARE(lastStatus(), (Status{idleText, false}));
        m_statuses.clear();
        m_eq->setCapture(true, false);
        QStringList texts;
        for (const Status& status : m_statuses) {
            texts << status.text;
            QVERIFY(!status.isError);
        }
        QCOMPARE(texts, expected);
        QCOMPARE(m_eq->tappedPID(), hasObject ? qint64(321) : qint64(-1));
    }

    void aFailureIsRememberedUntilThePlayerChanges_data() {
        QTest::addColumn<bool>("unusableFormat");
        QTest::newRow("start refused") << false;
        QTest::newRow("unusable format") << true;
    }
    void aFailureIsRememberedUntilThePlayerChanges() {
        QFETCH(bool, unusableFormat);
        m_pids[Source::spotify] = 100;
        m_capture.objects = {{100, 7}, {200, 8}};
        if (unusableFormat)
            m_capture.format.bitsPerChannel = 16;
        else
            m_capture.failNextStart = CaptureBackend::Failure{QStringLiteral("ConnectStream"), -5};
        m_eq->start();
        m_eq->setCapture(true, false);
        QCOMPARE(lastStatus(), (Status{failureText, true}));
        QCOMPARE(m_eq->failedPID(), std::optional<qint64>(100));
        QCOMPARE(m_eq->tappedPID(), qint64(-1));
        QCOMPARE(m_capture.calls.last(), QStringLiteral("teardown"));
        m_capture.format.bitsPerChannel = 32;

        // Same pid: the supervisor leaves the error standing and tries nothing.
        const int starts = m_capture.count("startCapture");
        const int reports = m_statuses.size();
        advance(AudioEQ::supervisorInterval);
        advance(AudioEQ::supervisorInterval);
        QCOMPARE(m_capture.count("startCapture"), starts);
        QCOMPARE(m_statuses.size(), reports);

        // A restarted player has a new pid and is tried again.
        m_pids[Source::spotify] = 200;
        advance(AudioEQ::supervisorInterval);
        QCOMPARE(m_eq->tappedPID(), qint64(200));
        QCOMPARE(m_eq->failedPID(), std::nullopt);
        QCOMPARE(lastStatus().text, QStringLiteral("Waiting for audio from Spotify…"));
    }

    void aReplacedBackendIsTornDownBeforeItIsLetGo() {
        startCapturing();
        FakeCapture other;
        m_eq->setCaptureBackend(&other);
        QCOMPARE(m_capture.count("teardown"), 1);
        QCOMPARE(m_capture.running, quint64(0));
        QCOMPARE(m_eq->tappedPID(), qint64(-1));
        m_eq->setCaptureBackend(&m_capture);
    }

    void aSourceChangeTearsDownAndTheSameSourceKeepsTheCapture() {
        startCapturing();
        m_eq->setSource(QStringLiteral("Spotify"));
        m_eq->setSource(QStringLiteral("anything else means Spotify"));
        QCOMPARE(m_capture.count("teardown"), 0);
        QCOMPARE(m_eq->tappedPID(), qint64(100));

        m_eq->setSource(QStringLiteral("Music"));
        QCOMPARE(m_capture.count("teardown"), 1);
        QCOMPARE(m_eq->tappedPID(), qint64(-1));
        QCOMPARE(m_eq->source(), Source::music);
        // The change itself does not look for the new player; the next tick does.
        QCOMPARE(m_capture.count("audioObject"), 0);
        advance(AudioEQ::supervisorInterval);
        QCOMPARE(lastStatus().text, QStringLiteral("Open your music player and play a song."));
    }

    void notWantingWaitsOutTheGraceUnlessToldToStopNow_data() {
        QTest::addColumn<bool>("stopNow");
        QTest::addColumn<bool>("wantedAgain");
        QTest::addColumn<bool>("tappedAfterGrace");
        QTest::newRow("grace runs out") << false << false << false;
        QTest::newRow("wanted again within the grace") << false << true << true;
        QTest::newRow("stop now") << true << false << false;
    }
    void notWantingWaitsOutTheGraceUnlessToldToStopNow() {
        QFETCH(bool, stopNow);
        QFETCH(bool, wantedAgain);
        QFETCH(bool, tappedAfterGrace);
        startCapturing();
        m_eq->setCapture(false, stopNow);
        QCOMPARE(m_eq->isStopGraceArmed(), !stopNow);
        QCOMPARE(m_eq->tappedPID(), stopNow ? qint64(-1) : qint64(100));
        advance(1.4);
        if (wantedAgain) {
            m_eq->setCapture(true, false);
            QVERIFY(!m_eq->isStopGraceArmed());
        }
        advance(0.2);
        QCOMPARE(m_eq->tappedPID(), tappedAfterGrace ? qint64(100) : qint64(-1));
        QCOMPARE(m_eq->wantCapture(), tappedAfterGrace);
        // The tap that was kept is the same one: nothing was rebuilt.
        QCOMPARE(m_capture.count("startCapture"), 0);
        if (!tappedAfterGrace)
            QCOMPARE(lastStatus(), (Status{idleText, false}));
    }

    void theSupervisorTicksOnlyWhileCaptureIsWanted() {
        m_eq->start();
        QVERIFY(!m_eq->isSupervising());
        m_eq->setCapture(true, false);
        QVERIFY(m_eq->isSupervising());
        m_eq->setCapture(false, true);
        QVERIFY(!m_eq->isSupervising());
        advance(10);
        QCOMPARE(m_capture.count("audioObject"), 0);
    }

    // Stopped, nothing of the capture is left running, nor the wait for a wake from sleep.
    void stopEndsTheCaptureAndTheWakeWatch() {
        startCapturing();
        m_eq->stop();
        QCOMPARE(m_capture.calls, QStringList{"teardown"});
        QCOMPARE(m_capture.running, quint64(0));
        QVERIFY(!m_capture.wanted);
        QCOMPARE(m_sleep.stopped, 1);
        QVERIFY(!m_eq->isSupervising());
    }

    void theWatchdogGivesANewCaptureSixSecondsOfPeace_data() {
        QTest::addColumn<double>("after");
        QTest::addColumn<bool>("warns");
        QTest::newRow("5.9 s") << 5.9 << false;
        QTest::newRow("6.1 s") << 6.1 << true;
    }
    void theWatchdogGivesANewCaptureSixSecondsOfPeace() {
        QFETCH(double, after);
        QFETCH(bool, warns);
        startCapturing();
        // The signal clock is in the distant past; only the start time counts.
        m_clock.advance(after);
        m_eq->refresh();
        QCOMPARE(lastStatus() == (Status{silenceText, true}), warns);
        // The silent capture is not torn down.
        QCOMPARE(m_eq->tappedPID(), qint64(100));
        QCOMPARE(m_capture.count("teardown"), 0);
    }

    void signalKeepsTheWatchdogQuietAndIsReported() {
        startCapturing();
        std::vector<float> tone(2 * 4096);
        for (std::size_t i = 0; i < 4096; ++i)
            tone[2 * i] = tone[2 * i + 1] =
                0.5f * float(std::sin(2.0 * std::numbers::pi * 440.0 * double(i) / 48000.0));
        m_clock.advance(5.0);
        m_capture.deliver(tone);
        QTRY_COMPARE(lastStatus(), (Status{"Receiving audio from Spotify", false}));
        m_clock.advance(5.0); // 10 s after the start, 5 s after the signal
        m_eq->refresh();
        QCOMPARE(lastStatus().text, QStringLiteral("Receiving audio from Spotify"));
        m_clock.advance(1.5);
        m_eq->refresh();
        QCOMPARE(lastStatus(), (Status{silenceText, true}));
    }

    void aCaptureThatEndsByItselfIsLookedForAgain_data() {
        QTest::addColumn<quint64>("outputAfter"); // the player's output afterwards, 0 = none
        QTest::addColumn<double>("ranFor");
        QTest::newRow("the player opened a new output") << quint64(11) << 5.0;
        QTest::newRow("the player has no output now") << quint64(0) << 5.0;
        QTest::newRow("a new output right after the start") << quint64(11) << 0.2;
        QTest::newRow("refused right after its start") << quint64(7) << 0.2;
    }
    void aCaptureThatEndsByItselfIsLookedForAgain() {
        QFETCH(quint64, outputAfter);
        QFETCH(double, ranFor);
        startCapturing();
        advance(ranFor);
        const quint64 first = m_capture.running;
        if (outputAfter)
            m_capture.objects[100] = outputAfter;
        else
            m_capture.objects.erase(100);
        m_capture.end(first);
        QCoreApplication::processEvents();
        QVERIFY(m_capture.count("teardown") >= 1);
        if (outputAfter == 7) {
            // A failure of that pid: no rebuild now, none on the next ticks.
            QCOMPARE(m_eq->failedPID(), std::optional<qint64>(100));
            QCOMPARE(lastStatus(), (Status{failureText, true}));
            advance(2 * AudioEQ::supervisorInterval);
            QCOMPARE(m_capture.count("startCapture"), 0);
            return;
        }
        if (outputAfter) {
            QCOMPARE(m_capture.calls.last(), QStringLiteral("startCapture 11"));
            QCOMPARE(m_eq->tappedPID(), qint64(100));
        } else {
            QCOMPARE(m_eq->tappedPID(), qint64(-1));
            QCOMPARE(lastStatus().text, QStringLiteral("Waiting for Spotify to play audio…"));
        }
        // A late word about the first capture changes nothing.
        const QStringList calls = m_capture.calls;
        m_capture.end(first);
        QCoreApplication::processEvents();
        QCOMPARE(m_capture.calls, calls);
    }

    void anOutputThatAppearsIsTakenWithoutWaitingForTheTick() {
        m_pids[Source::spotify] = 100;
        m_eq->start();
        m_eq->setCapture(true, false);
        QVERIFY(m_capture.wanted);
        QCOMPARE(m_eq->tappedPID(), qint64(-1));
        m_capture.objects[100] = 7;
        m_capture.changed();
        m_capture.changed();
        QCoreApplication::processEvents();
        QCOMPARE(m_eq->tappedPID(), qint64(100));
        QCOMPARE(m_capture.count("startCapture"), 1);
        m_eq->setCapture(false, true);
        QVERIFY(!m_capture.wanted);
    }

    void wakeFromSleepRebuildsTheCaptureHalfASecondLater() {
        startCapturing();
        QCOMPARE(m_sleep.observed, 1);
        QVERIFY(m_sleep.woke);
        m_sleep.woke();
        QCOMPARE(m_capture.calls, QStringList{"teardown"});
        QCOMPARE(m_eq->tappedPID(), qint64(-1));
        advance(0.4);
        QCOMPARE(m_capture.count("startCapture"), 0);
        advance(0.1);
        QCOMPARE(m_capture.count("startCapture"), 1);
        QCOMPARE(m_eq->tappedPID(), qint64(100));
    }
};

QTEST_GUILESS_MAIN(tst_AudioEQCapture)
#include "tst_AudioEQCapture.moc"
