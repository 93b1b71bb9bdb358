#include "mpris/FakeMprisPlayer.h"
#include "setup/MusicAutomation.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace MirlPlayer;
using namespace MirlPlayer::MusicAutomation;

// Stand-in players on a bus of the test's own, whose policy refuses calls to one name as a
// sandbox's policy does.
class tst_MusicAutomation : public QObject {
    Q_OBJECT

    MirlTest::PrivateBus m_bus{
        QStringLiteral("<deny send_destination=\"org.mpris.MediaPlayer2.locked\"/>")};

private Q_SLOTS:
    void aPlayerIsProvenOnlyByItsOwnAnswer_data() {
        QTest::addColumn<QString>("player"); // the stand-in's name, empty for none
        QTest::addColumn<bool>("hangs");
        QTest::addColumn<QString>("entry"); // a launcher entry installed for it
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("probe");
        QTest::newRow("answers") << "vlc" << false << "" << int(Access::needsAsk)
                                 << int(ProbeResult::answered);
        QTest::newRow("never answers: unknown at the time limit")
            << "vlc" << true << "" << int(Access::needsAsk) << int(ProbeResult::unknown);
        QTest::newRow("refused by the bus")
            << "locked" << false << "" << int(Access::needsAsk) << int(ProbeResult::denied);
        QTest::newRow("no player, not installed")
            << "" << false << "" << int(Access::notInstalled) << int(ProbeResult::unknown);
        QTest::newRow("no player, installed from Flatpak")
            << "" << false << "io.mpv.Mpv.desktop" << int(Access::notRunning)
            << int(ProbeResult::unknown);
        QTest::newRow("no player, installed from Snap")
            << "" << false << "mpv_mpv.desktop" << int(Access::notRunning)
            << int(ProbeResult::unknown);
    }
    void aPlayerIsProvenOnlyByItsOwnAnswer() {
        QFETCH(QString, player);
        QFETCH(bool, hangs);
        QFETCH(QString, entry);
        QFETCH(int, status);
        QFETCH(int, probe);
        const QString name = QStringLiteral("org.mpris.MediaPlayer2.") +
                             (player.isEmpty() ? QStringLiteral("mpv") : player);
        std::unique_ptr<MirlTest::FakeMprisPlayer> fake;
        if (!player.isEmpty()) {
            fake = std::make_unique<MirlTest::FakeMprisPlayer>(m_bus.address(), name);
            fake->setPlayerProperties({{"PlaybackStatus", "Paused"}});
            fake->setHanging(hangs);
        }
        QTemporaryDir dir;
        Places places{{dir.filePath("applications")}, {dir.filePath("bin")}};
        if (!entry.isEmpty()) {
            QDir().mkpath(places.applicationDirs.constFirst());
            QFile file(places.applicationDirs.constFirst() + u'/' + entry);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        const App app = musicPlayer(name, QStringLiteral("Player"));
        const QDBusConnection bus = m_bus.connect(QStringLiteral("setup"));
        QCOMPARE(int(MusicAutomation::status(app, bus, places)), status);

        QElapsedTimer elapsed;
        elapsed.start();
        QCOMPARE(int(MusicAutomation::probe(name, 0.3, bus)), probe);
        // The limit is the one given, not the bus's default of 25 s.
        QVERIFY(elapsed.elapsed() < 5000);
    }

    void theListenedPlayerIsTheOneThatPlays() {
        MirlTest::FakeMprisPlayer paused(m_bus.address(), "org.mpris.MediaPlayer2.a");
        paused.setPlayerProperties({{"PlaybackStatus", "Paused"}});
        MirlTest::FakeMprisPlayer playing(m_bus.address(), "org.mpris.MediaPlayer2.b");
        playing.setPlayerProperties({{"PlaybackStatus", "Playing"}});
        const QDBusConnection bus = m_bus.connect(QStringLiteral("choice"));
        const QStringList ids{"org.mpris.MediaPlayer2.gone", "org.mpris.MediaPlayer2.a",
                              "org.mpris.MediaPlayer2.b"};
        // Both stand-ins live in this process: which one was chosen is told by who was asked.
        const int before = playing.messagesReceived();
        QCOMPARE(playerProcess(ids, bus),
                 std::optional<qint64>(QCoreApplication::applicationPid()));
        QCOMPARE(playing.messagesReceived(), before + 1);
        playing.setPlayerProperties({{"PlaybackStatus", "Paused"}});
        QVERIFY(playerProcess(ids, bus).has_value()); // none plays: the first that runs
        QCOMPARE(playerProcess({"org.mpris.MediaPlayer2.gone"}, bus), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(tst_MusicAutomation)
#include "tst_MusicAutomation.moc"
