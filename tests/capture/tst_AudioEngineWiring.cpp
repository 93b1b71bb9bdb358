// How the now-playing model drives the audio engine: the four inputs, their debounce, the sink,
// and the engine's reports back into the stores and the settings.
#include "playback/AudioEngineWiring.h"

#include "audio/AudioCaptureSettings.h"
#include "audio/AudioEQ.h"
#include "audio/EQTuning.h"
#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "playback/PlayerState.h"
#include "visualizers/VizConfig.h"

#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

namespace {

// Spotify (pid 100) always plays through object 7, and every start works unless told otherwise.
class FakeCapture final : public CaptureBackend {
public:
    int starts = 0;
    int teardowns = 0;
    bool failStarts = false;
    void removeStale() override {}
    quint64 audioObject(qint64 pid) override { return pid == 100 ? 7 : 0; }
    StartResult startCapture(quint64) override {
        ++starts;
        if (failStarts)
            return Failure{QStringLiteral("ConnectStream"), -1};
        return Started{{48000, 2, 32, true, true}, quint64(starts)};
    }
    void teardown() override { ++teardowns; }
};

} // namespace

class tst_AudioEngineWiring : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    ManualClock m_clock;
    EQTuning m_tuning;
    FakeCapture m_capture;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<VizConfig> m_viz;
    std::unique_ptr<Theme> m_theme;
    std::unique_ptr<AudioCaptureSettings> m_settings;
    std::unique_ptr<PlayerState> m_state;
    std::unique_ptr<AudioEQ> m_engine;
    std::unique_ptr<AudioEngineWiring> m_wiring;

    void advance(double seconds) {
        m_clock.advance(seconds);
        m_wiring->pollSink();
        m_engine->pollTimers();
    }
    // A playing Spotify with the visualizer shown and consent given, settled.
    void playing() {
        m_state->publishSourceName(QStringLiteral("Spotify"));
        m_state->publishPlaying(true);
        advance(0.1);
        QCOMPARE(m_engine->tappedPID(), m_capture.failStarts ? qint64(-1) : qint64(100));
    }

private Q_SLOTS:
    void init() {
        m_clock.set(1000);
        m_capture = FakeCapture{};
        QFile::remove(m_dir.filePath(QStringLiteral("prefs.conf")));
        m_prefs = std::make_unique<Preferences>(m_dir.filePath(QStringLiteral("prefs.conf")));
        m_prefs->setValue(QStringLiteral("showVisualizer"), true);
        m_viz = std::make_unique<VizConfig>(*m_prefs, m_clock);
        m_theme = std::make_unique<Theme>(*m_prefs, m_clock);
        m_theme->setShowVisualizer(true);
        m_theme->setEdgeReflection(false); // the visualizer alone needs audio
        m_settings = std::make_unique<AudioCaptureSettings>(*m_prefs);
        m_state = std::make_unique<PlayerState>(nullptr, m_clock);
        m_engine = std::make_unique<AudioEQ>(*m_prefs, *m_viz, m_clock, &m_tuning);
        m_engine->setCaptureBackend(&m_capture);
        m_engine->setPlayerLookup({[](Source source) -> std::optional<qint64> {
                                       if (source == Source::spotify)
                                           return 100;
                                       return std::nullopt;
                                   },
                                   {}});
        m_wiring = std::make_unique<AudioEngineWiring>(*m_state, *m_theme, *m_settings, *m_engine,
                                                       m_clock);
        m_wiring->start();
    }
    void cleanup() {
        m_wiring.reset();
        m_engine.reset();
        m_state.reset();
        m_settings.reset();
        m_theme.reset();
        m_viz.reset();
        m_prefs.reset();
    }

    void theSinkActsOnlyOnceTheInputsSettle() {
        QVERIFY(m_settings->enabled());
        // A track change: source and playing move together, and nothing happens for 100 ms.
        m_state->publishSourceName(QStringLiteral("Spotify"));
        m_state->publishPlaying(true);
        advance(0.09);
        QVERIFY(!m_engine->wantCapture());
        QCOMPARE(m_capture.starts, 0);
        advance(0.01);
        QVERIFY(m_engine->wantCapture());
        QCOMPARE(m_capture.starts, 1);
    }

    void aRepeatOfTheSameInputsIsDropped() {
        playing();
        // Moving the look without changing whether audio is needed is no new input.
        m_theme->setBackgroundStyleID(QStringLiteral("solid"));
        m_state->publishPlaying(true);
        QVERIFY(!m_wiring->sinkPending());
        // A flap that ends where it began still waits out the debounce, then changes nothing.
        m_state->publishPlaying(false);
        m_state->publishPlaying(true);
        QVERIFY(m_wiring->sinkPending());
        advance(0.1);
        QCOMPARE(m_capture.starts, 1);
        QCOMPARE(m_capture.teardowns, 1); // only the one before the first start
    }

    void whatStopsAtOnceAndWhatWaitsForTheGrace_data() {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("tornDownAtOnce");
        QTest::newRow("paused") << "pause" << true;
        QTest::newRow("consent withdrawn") << "consent" << true;
        QTest::newRow("visualizer hidden") << "visualizer" << false;
    }
    void whatStopsAtOnceAndWhatWaitsForTheGrace() {
        QFETCH(QString, change);
        QFETCH(bool, tornDownAtOnce);
        playing();
        if (change == u"pause")
            m_state->publishPlaying(false);
        else if (change == u"consent")
            m_settings->setEnabled(false);
        else
            m_theme->setShowVisualizer(false);
        advance(0.1);
        QCOMPARE(m_engine->tappedPID() == -1, tornDownAtOnce);
        QCOMPARE(m_engine->isStopGraceArmed(), !tornDownAtOnce);
        advance(AudioEQ::stopGraceInterval);
        QCOMPARE(m_engine->tappedPID(), qint64(-1));
        QVERIFY(!m_engine->isSupervising());
    }

    void theSourceFollowsThePlayer() {
        playing();
        m_state->publishSourceName(QStringLiteral("Music"));
        advance(0.1);
        QCOMPARE(m_engine->source(), Source::music);
        QCOMPARE(m_settings->status(), QStringLiteral("Open your music player and play a song."));
    }

    void reportsReachTheStoresAndTheSettings() {
        playing();
        QCOMPARE(m_settings->status(), QStringLiteral("Waiting for audio from Spotify…"));
        QVERIFY(!m_settings->needsAttention());

        QList<double> levels(128, 0.25);
        m_clock.advance(0.5);
        m_engine->onLevels(levels);
        QCOMPARE(m_state->eqStore()->levels(), levels);
        QCOMPARE(m_state->lastAudioAt(), m_clock.now());

        const quint64 before = m_state->stereoStore()->generation();
        m_engine->setCapture(false, true); // a teardown flattens the stereo curve
        QVERIFY(m_state->stereoStore()->generation() > before);
        QCOMPARE(m_state->stereoStore()->curve(), StereoStore::Curve{});
    }

    void tryAgainRetriesTheCapture() {
        m_capture.failStarts = true;
        playing();
        QVERIFY(m_settings->needsAttention());
        advance(AudioEQ::supervisorInterval);
        QCOMPARE(m_capture.starts, 1); // the failure stands for this pid
        m_capture.failStarts = false;
        m_settings->postRetry();
        QCOMPARE(m_capture.starts, 2);
        QVERIFY(!m_settings->needsAttention());
    }
};

QTEST_MAIN(tst_AudioEngineWiring)
#include "tst_AudioEngineWiring.moc"
