// The first start of the real program's session: a fresh preferences file on a private X server,
// with the test environment's mpv on the session bus and PipeWire, led through the assistant to
// the playing card.
#include "X11TestMain.h"
#include "app/DesktopSession.h"
#include "app/FactoryPreferences.h"
#include "audio/AudioCaptureSettings.h"
#include "audio/LevelsStore.h"
#include "core/Preferences.h"
#include "look/LookTypes.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"
#include "setup/SetupModel.h"
#include "setup/SetupWindow.h"
#include "support/TestEnv.h"
#include "visualizers/views/VisualizerTypes.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QProcess>
#include <QScopeGuard>
#include <QTest>

using namespace MirlPlayer;

namespace {

const QString mpv = QStringLiteral("org.mpris.MediaPlayer2.mpv");

QDBusMessage toMpv(const QString& interface, const QString& method, const QVariantList& args = {}) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        mpv, QStringLiteral("/org/mpris/MediaPlayer2"), interface, method);
    call.setArguments(args);
    return QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
}

void setPlaying(bool playing) {
    toMpv(QStringLiteral("org.mpris.MediaPlayer2.Player"),
          playing ? QStringLiteral("Play") : QStringLiteral("Pause"));
}

QString mpvTitle() {
    const QDBusMessage reply =
        toMpv(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
              {QStringLiteral("org.mpris.MediaPlayer2.Player"), QStringLiteral("Metadata")});
    const QVariantMap metadata = qdbus_cast<QVariantMap>(
        reply.arguments().value(0).value<QDBusVariant>().variant().value<QDBusArgument>());
    return metadata.value(QStringLiteral("xesam:title")).toString();
}

// Whether a capture stream of this program is in the sound server's graph.
bool captureInGraph() {
    QProcess dump;
    dump.start(QStringLiteral("pw-dump"), {});
    dump.waitForFinished(5000);
    return dump.readAllStandardOutput().contains("mirl-pro-capture");
}

} // namespace

class tst_SetupWalkthrough : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() {
        // A fresh start: no preferences from an earlier run of this test (its home is private).
        QDir(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")) + QStringLiteral("/MIRL PRO"))
            .removeRecursively();
        QQuickWindow::setDefaultAlphaBuffer(true);
        QApplication::setApplicationName(QStringLiteral("MIRL PRO"));
        QApplication::setQuitOnLastWindowClosed(false);
        seedFactoryPreferences(Preferences::shared(), QStringLiteral(SHIPPED_DEFAULTS));
        registerLookTypes();
    }

    void aFreshStartIsLedThroughSetupToThePlayingCard() {
        Preferences& prefs = Preferences::shared();
        QVERIFY(!prefs.contains("setupCompleted"));
        DesktopSession session;
        session.launch();
        PlayerState& player = session.delegate().player();
        SetupWindow* window = session.setupWindow();
        QVERIFY(window && window->window());
        QTRY_VERIFY(window->window()->isVisible());
        QVERIFY(!player.controller()); // the gate waits for the assistant
        window->window()->close();     // a first run's window cannot be closed away
        QVERIFY(window->window()->isVisible());

        SetupModel& model = *window->model();
        model.next();
        model.next();
        QCOMPARE(model.step(), SetupModel::Step::music);
        QTRY_COMPARE(model.apps().constLast().toMap().value("id").toString(), mpv);
        model.ask(mpv);
        QTRY_COMPARE_WITH_TIMEOUT(model.access(mpv), MusicAutomation::Access::allowed, 20000);

        // The probe hears mpv only while it plays.
        model.next();
        // The environment's player is shared: it plays again whatever happens here.
        const auto resume = qScopeGuard([] { setPlaying(true); });
        setPlaying(false);
        model.setLiveVisualizer(true);
        model.startProbe();
        QTRY_VERIFY(model.probe()->running());
        QTest::qWait(1500);
        QVERIFY(!model.probe()->heard());
        setPlaying(true);
        QTRY_VERIFY_WITH_TIMEOUT(model.probe()->heard(), 8000);
        QVERIFY(captureInGraph());

        // "Artwork only" stops listening, and nothing captures.
        model.setLiveVisualizer(false);
        QVERIFY(!model.probe()->running());
        QTRY_VERIFY(!captureInGraph());
        QVERIFY(!AudioCaptureSettings::shared().enabled());
        QVERIFY(!player.controller());

        model.setLiveVisualizer(true);
        while (model.step() != SetupModel::Step::done)
            model.next();
        model.next(); // "Start listening"
        QTRY_VERIFY(!session.setupWindow());
        QVERIFY(prefs.boolValue("setupCompleted", false));
        QVERIFY(prefs.boolValue("setupAssistantFinished", false));
        QVERIFY(AudioCaptureSettings::shared().enabled());

        // The card shows mpv's song, and the levels move with it.
        QTRY_COMPARE_WITH_TIMEOUT(player.title(), mpvTitle(), 10000);
        QVERIFY(player.isPlaying());
        QProcess::execute(
            QStringLiteral("xdotool"),
            {QStringLiteral("mousemove"), QStringLiteral("1467"), QStringLiteral("50")});
        auto loudest = [&] {
            const QList<double>& levels = player.eqStore()->levels();
            return levels.isEmpty() ? 0.0 : *std::max_element(levels.begin(), levels.end());
        };
        QTRY_VERIFY_WITH_TIMEOUT(loudest() > 0.05, 10000);
    }
};

// The test environment's bus, where mpv plays; the graphics are chosen before the application.
int main(int argc, char** argv) {
    return MirlPlayer::Test::runOnPrivateX<tst_SetupWalkthrough, QApplication>(
        argc, argv, MirlPlayer::Test::X11TestSession::Bus::inherited, [] {
            requestVisualizerGraphics();
            const bool env = MirlTest::useTestEnv();
            if (!env)
                qWarning("no test environment");
            return env;
        });
}

#include "tst_SetupWalkthrough.moc"
