#include "setup/SetupModel.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <atomic>

using namespace MirlPlayer;
using Access = MusicAutomation::Access;
using ProbeResult = MusicAutomation::ProbeResult;

namespace {

// A capture that hands over whatever block the test pushes.
class FakeCapture : public CaptureBackend {
public:
    void removeStale() override {}
    quint64 audioObject(qint64 pid) override { return pid == 42 ? 7 : 0; }
    StartResult startCapture(quint64) override {
        capturing = true;
        return Started{{48000, 2, 32, true, true}, 1};
    }
    void teardown() override { capturing = false; }
    void push(const std::vector<float>& samples) {
        deliverBlock({{48000, 2, 32, true, true}, quint32(samples.size() / 2), samples.data()});
    }
    bool capturing = false;
};

const QString player = QStringLiteral("org.mpris.MediaPlayer2.vlc");

} // namespace

class tst_SetupModel : public QObject {
    Q_OBJECT

    // Stand-in system: the state a refresh reads, and a probe the test answers by hand. Shared
    // with the queues, which may still hold it when the test ends.
    struct System {
        std::atomic<Access> status{Access::needsAsk};
        std::atomic<bool> running{true};
        std::atomic<int> launches{0};
        QSemaphore answer;
        std::atomic<ProbeResult> result{ProbeResult::answered};
    };
    struct Rig {
        std::shared_ptr<System> sys = std::make_shared<System>();
        FakeCapture* capture = new FakeCapture;
        std::unique_ptr<SetupModel> model;

        explicit Rig(double askExpiry = 30) {
            SetupModel::Services s;
            s.apps = [] { return QList<MusicAutomation::App>{{player, "VLC", "vlc", {}}}; };
            s.status = [sys = sys](const auto&) { return sys->status.load(); };
            s.running = [sys = sys](const auto&) { return sys->running.load(); };
            s.launch = [sys = sys](const auto&) {
                ++sys->launches;
                sys->running = true;
                return true;
            };
            s.probe = [sys = sys](const auto&, double) {
                sys->answer.acquire();
                return sys->result.load();
            };
            s.askExpiry = askExpiry;
            s.launchPoll = 0.01;
            s.launchSettle = 0;
            auto probe = std::make_unique<AudioProbe>(
                std::unique_ptr<CaptureBackend>(capture),
                [](const QStringList&) { return std::optional<qint64>(42); });
            model = std::make_unique<SetupModel>(s, std::move(probe), true);
        }
        ~Rig() { sys->answer.release(10); }
        Access access() const { return model->access(player); }
        void refresh(Access now) {
            sys->status = now;
            QSignalSpy settled(model.get(), &SetupModel::accessChanged);
            model->refresh();
            settled.wait(300);
        }
    };

private Q_SLOTS:
    void anAnswerOutranksTheRefreshUntilRefused() {
        Rig rig;
        rig.sys->running = false;
        rig.model->ask(player);
        QCOMPARE(rig.access(), Access::asking);
        rig.refresh(Access::allowed);
        QCOMPARE(rig.access(), Access::asking); // a refresh leaves the ask alone
        rig.model->ask(player);                 // one ask at a time
        rig.sys->answer.release();
        QTRY_COMPARE(rig.access(), Access::allowed);
        QCOMPARE(rig.sys->launches.load(), 1); // a closed player was started before it was asked
        rig.refresh(Access::notRunning);
        QCOMPARE(rig.access(), Access::allowed); // proven
        rig.refresh(Access::denied);
        QCOMPARE(rig.access(), Access::denied);
    }

    void anUnansweredAskExpiresAndItsLateAnswerIsDropped() {
        Rig rig(0.1);
        rig.model->ask(player);
        QTRY_COMPARE(rig.access(), Access::noAnswer);
        rig.refresh(Access::needsAsk);
        QCOMPARE(rig.access(), Access::noAnswer); // the text stays until the user acts
        rig.sys->answer.release();
        QTest::qWait(200);
        QCOMPARE(rig.access(), Access::noAnswer);
        // "Try Again": no answer in time while the player is there to ask: noAnswer again.
        rig.sys->result = ProbeResult::unknown;
        rig.model->ask(player);
        QCOMPARE(rig.access(), Access::asking);
        rig.sys->answer.release();
        QTRY_COMPARE(rig.access(), Access::noAnswer);
    }

    void theMeterRisesAtOnceAndFallsBy18PercentPerTick_data() {
        QTest::addColumn<QList<float>>("peaks"); // one block's largest sample per tick
        QTest::addColumn<float>("level");
        QTest::addColumn<bool>("heard");
        QTest::newRow("rise, scaled") << QList<float>{0.5f} << 0.8f << true;
        QTest::newRow("clipped at full") << QList<float>{0.9f} << 1.0f << true;
        QTest::newRow("falls") << QList<float>{0.5f, 0.f, 0.f} << 0.8f * 0.82f * 0.82f << true;
        QTest::newRow("the threshold itself is silence")
            << QList<float>{0.002f} << 0.0032f << false;
        QTest::newRow("just above it") << QList<float>{0.0021f} << 0.00336f << true;
    }
    void theMeterRisesAtOnceAndFallsBy18PercentPerTick() {
        QFETCH(QList<float>, peaks);
        QFETCH(float, level);
        QFETCH(bool, heard);
        Rig rig;
        rig.model->startProbe();
        QTRY_VERIFY(rig.capture->capturing);
        for (float p : peaks) {
            // The loud sample sits in a whole group of four; a quiet remainder follows.
            rig.capture->push({0.f, -p, 0.f, 0.f, 0.1f, 0.1f});
            rig.model->probe()->meterTick();
        }
        QVERIFY(qAbs(rig.model->probe()->level() - level) < 1e-6f);
        QCOMPARE(rig.model->probe()->heard(), heard);
    }

    void artworkOnlyAndLeavingTheStepStopTheProbe() {
        Rig rig;
        rig.model->go(SetupModel::Step::visualizer);
        rig.model->startProbe();
        QTRY_VERIFY(rig.capture->capturing);
        rig.model->setLiveVisualizer(false);
        QVERIFY(!rig.capture->capturing);
        QVERIFY(!rig.model->probe()->running());
        rig.model->setLiveVisualizer(true);
        rig.model->startProbe();
        QTRY_VERIFY(rig.capture->capturing);
        rig.model->next();
        QVERIFY(!rig.capture->capturing);
    }
};

QTEST_GUILESS_MAIN(tst_SetupModel)
#include "tst_SetupModel.moc"
