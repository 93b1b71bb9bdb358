// The whole road in a private session: a player announced over MPRIS and playing through
// PipeWire, the now-playing model, the wiring, the capture supervisor, PipeWire capture and the
// analysis, down to the 128 band levels.
#include "PrivateAudioSession.h"
#include "audio/AudioCaptureSettings.h"
#include "audio/AudioEQ.h"
#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "platform/linux/pipewire/PipeWireCapture.h"
#include "playback/AudioEngineWiring.h"
#include "playback/PlayerState.h"
#include "visualizers/VizConfig.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <csignal>

using namespace MirlPlayer;
using MirlPlayer::Testing::PrivateAudioSession;

namespace {

const QString mprisPlugin = QStringLiteral("/usr/lib/mpv-mpris/mpris.so");
// An A major chord with its root in the bass, as a player would play it.
const QString chord = QStringLiteral(
    "av://lavfi:aevalsrc=0.25*sin(2*PI*110*t)+0.12*sin(2*PI*277.18*t)+0.12*sin(2*PI*329.63*t)"
    ":s=48000");

// The band of a frequency on the analysis's scale: 128 bands, logarithmic from 40 Hz to 16 kHz.
int bandOf(double hz) {
    return int(std::floor(std::log(hz / 40.0) / std::log(16000.0 / 40.0) * 128.0));
}

int loudestBand(const QList<double>& levels) {
    return int(std::max_element(levels.begin(), levels.end()) - levels.begin());
}

bool hasCaptureNode(const QJsonArray& dump) {
    for (const QJsonValue& value : dump) {
        const QJsonObject props =
            value.toObject().value(u"info").toObject().value(u"props").toObject();
        if (props.value(u"node.name").toString() == u"mirl-pro-capture")
            return true;
    }
    return false;
}

} // namespace

class tst_CapturePipeline : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PrivateAudioSession> m_session;
    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<VizConfig> m_viz;
    std::unique_ptr<Theme> m_theme;
    std::unique_ptr<AudioCaptureSettings> m_settings;
    std::unique_ptr<MprisPlayerBridge> m_bridge;
    std::unique_ptr<PipeWireCapture> m_capture;
    std::unique_ptr<AudioEQ> m_engine;
    std::unique_ptr<PlayerState> m_state;
    std::unique_ptr<AudioEngineWiring> m_wiring;
    QStringList m_statuses;
    qint64 m_player = 0;
    qint64 m_tone = 0;

    QList<double> m_peak; // the largest value each band reached since the last clear
    // The sum of the values of the 3 kHz band since then, and their number: a mean is not thrown
    // by a frame of a buffer that a loaded machine dropped, as a peak is.
    double m_otherSum = 0;
    int m_frames = 0;

private Q_SLOTS:
    void initTestCase() {
        m_session = std::make_unique<PrivateAudioSession>();
        if (!m_session->start())
            QFAIL(qPrintable(u"private audio session: " + m_session->error()));
        m_player = m_session->startPlayer(chord, {u"--script=" + mprisPlugin});
        m_tone = m_session->startTone(3000);
        QVERIFY(m_session->waitForStreamOf(m_player));
        QVERIFY(m_session->waitForStreamOf(m_tone));

        m_prefs = std::make_unique<Preferences>(m_dir.filePath(QStringLiteral("prefs.conf")));
        m_prefs->setValue(QStringLiteral("audioCaptureEnabled"), true);
        m_viz = std::make_unique<VizConfig>(*m_prefs);
        m_theme = std::make_unique<Theme>(*m_prefs, Clock::system());
        m_theme->setShowVisualizer(true);
        m_settings = std::make_unique<AudioCaptureSettings>(*m_prefs);
        connect(m_settings.get(), &AudioCaptureSettings::statusChanged, this,
                [this] { m_statuses << m_settings->status(); });
        m_bridge = std::make_unique<MprisPlayerBridge>(
            *m_prefs,
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("pipeline")));
        m_capture = std::make_unique<PipeWireCapture>();
        m_engine = std::make_unique<AudioEQ>(*m_prefs, *m_viz);
        m_engine->setCaptureBackend(m_capture.get());
        PlayerBridge* bridge = m_bridge.get();
        m_engine->setPlayerLookup({[bridge](Source s) { return bridge->pid(s); },
                                   [bridge](Source s) { return bridge->displayName(s); }});
        m_state = std::make_unique<PlayerState>(m_bridge.get());
        connect(m_state->eqStore(), &LevelsStore::levelsChanged, this, [this] {
            const QList<double>& levels = m_state->eqStore()->levels();
            if (m_peak.size() != levels.size())
                m_peak = levels;
            for (int i = 0; i < levels.size(); ++i)
                m_peak[i] = std::max(m_peak[i], levels[i]);
            m_otherSum += levels.value(bandOf(3000));
            ++m_frames;
        });
        m_state->setAudioEngineStarter([this](PlayerState& state) {
            m_wiring = std::make_unique<AudioEngineWiring>(state, *m_theme, *m_settings, *m_engine);
            m_wiring->start();
        });
        m_state->start();
    }

    void cleanupTestCase() {
        if (m_engine)
            m_engine->stop();
        m_wiring.reset();
        m_state.reset();
        m_engine.reset();
        m_capture.reset();
        m_bridge.reset();
        m_session.reset();
    }

    void hearsTheChordOfThePlayerAndNotTheOtherApp() {
        QTRY_VERIFY_WITH_TIMEOUT(m_state->isPlaying(), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(m_settings->status().startsWith(u"Receiving audio from "), 10000);
        QCOMPARE(m_engine->tappedPID(), m_player);
        m_peak.clear();
        m_otherSum = 0;
        m_frames = 0;
        QTest::qWait(1500);
        QCOMPARE(m_peak.size(), 128);
        // At 110 Hz neighbouring bands share one FFT bin (23.4 Hz wide), so the root may light
        // the band next to its own; the other chord tones sit twenty bands higher.
        QVERIFY2(std::abs(loudestBand(m_peak) - bandOf(110)) <= 1,
                 qPrintable(QString::number(loudestBand(m_peak))));
        // The other application's 3 kHz tone stays near the floor.
        QVERIFY2(m_otherSum / m_frames < 0.15, qPrintable(QStringLiteral("3 kHz band %1, root %2")
                                                              .arg(m_otherSum / m_frames)
                                                              .arg(m_peak[bandOf(110)])));
    }

    void pausingRemovesTheCaptureAtOnce() {
        QVERIFY(hasCaptureNode(m_session->dump()));
        QDBusConnection bus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("pipeline"));
        bus.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.mpris.MediaPlayer2.mpv"), QStringLiteral("/org/mpris/MediaPlayer2"),
            QStringLiteral("org.mpris.MediaPlayer2.Player"), QStringLiteral("Pause")));
        QTRY_VERIFY_WITH_TIMEOUT(!m_state->isPlaying(), 5000);
        // The debounce (0.1 s), then the capture goes without a grace; the rest of the second is
        // room for a loaded machine.
        QTRY_VERIFY_WITH_TIMEOUT(!m_capture->hasStream(), 1000);
        QVERIFY(!hasCaptureNode(m_session->dump()));
        QVERIFY(!m_engine->isSupervising());
        QCOMPARE(m_settings->status(), QStringLiteral("Play a song to check audio capture."));
        // Nothing of the engine runs now: no supervisor tick, no analysis, no levels from it
        // (the bars only sink to rest, and that fade stops once they have settled).
        const double lastDelivery = m_state->lastAudioAt();
        QTest::qWait(1000);
        QCOMPARE(m_state->lastAudioAt(), lastDelivery);
        QTRY_VERIFY(!m_state->fadeRunning());

        bus.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.mpris.MediaPlayer2.mpv"), QStringLiteral("/org/mpris/MediaPlayer2"),
            QStringLiteral("org.mpris.MediaPlayer2.Player"), QStringLiteral("Play")));
        QTRY_VERIFY_WITH_TIMEOUT(m_capture->hasStream(), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(m_settings->status().startsWith(u"Receiving audio from "), 5000);
    }

    void aKilledPlayerIsReportedAndARestartedOneHeardAgain() {
        m_statuses.clear();
        ::kill(pid_t(m_player), SIGKILL);
        QTRY_VERIFY_WITH_TIMEOUT(std::any_of(m_statuses.begin(), m_statuses.end(),
                                             [](const QString& s) {
                                                 return s.startsWith(u"Open ") &&
                                                        s.endsWith(u" and play a song.");
                                             }),
                                 int(AudioEQ::supervisorInterval * 1000));
        QTRY_VERIFY_WITH_TIMEOUT(!m_capture->hasStream(), 3000);

        m_player = m_session->startPlayer(chord, {u"--script=" + mprisPlugin});
        QTRY_VERIFY_WITH_TIMEOUT(m_state->isPlaying(), 10000);
        QTRY_COMPARE_WITH_TIMEOUT(m_engine->tappedPID(), m_player, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(m_settings->status().startsWith(u"Receiving audio from "), 10000);
    }

    // A player whose bus name and sound come from different processes, as browsers and Electron
    // players are: the parent announces itself over MPRIS and plays nothing; its child plays.
    void hearsAPlayerWhoseSoundComesFromItsChild() {
        m_session->stopPlayer(m_player);
        QTRY_VERIFY_WITH_TIMEOUT(!m_state->isPlaying(), 10000);
        // The child starts once the parent plays, so that it ends with the parent's playback.
        QFile script(m_dir.filePath(QStringLiteral("child.lua")));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(uR"(mp.register_event('file-loaded', function() mp.command_native_async({
  name = 'subprocess', playback_only = true, args = {'mpv', '--no-config', '--load-scripts=no',
  '--vo=null', '--loop=inf', '--ao=pipewire', '%1'}}, function() end) end))"_qs.arg(chord)
                         .toUtf8());
        script.close();
        m_player = m_session->startPlayer(
            QStringLiteral("av://lavfi:anullsrc=r=48000"),
            {u"--script=" + mprisPlugin, u"--script=" + script.fileName(), u"--ao=null"_qs});
        QTRY_VERIFY_WITH_TIMEOUT(m_state->isPlaying(), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(m_settings->status().startsWith(u"Receiving audio from "), 10000);
        QCOMPARE(m_engine->tappedPID(), m_player); // the parent plays nothing itself
        // The child goes with its parent.
        m_session->stopPlayer(m_player);
        QTRY_VERIFY_WITH_TIMEOUT(!m_capture->hasStream(), 5000);
    }
};

QTEST_MAIN(tst_CapturePipeline)
#include "tst_CapturePipeline.moc"
