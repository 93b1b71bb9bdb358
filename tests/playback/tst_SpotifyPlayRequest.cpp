// Play requests against a stand-in Spotify client on a private bus, the fixture Web API and a
// private X server.
#include "core/FocusLog.h"
#include "core/Preferences.h"
#include "core/PrivateFile.h"
#include "mpris/FakeMprisPlayer.h"
#include "panel/X11TestMain.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "platform/linux/x11/X11Workspace.h"
#include "playback/PlayerState.h"
#include "playback/SpotifyPlayRequest.h"
#include "playback/SpotifyQueue.h"
#include "spotify/FakeSpotifyServer.h"
#include "spotify/SpotifyLibrary.h"

#include <QDBusObjectPath>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;
using MirlPlayer::Test::ForeignWindow;

namespace {
const QString kClient = QStringLiteral("0123456789abcdef0123456789abcdef");

QVariantMap playingTrack(const QString& id, double positionS = 10) {
    return {{"PlaybackStatus", "Playing"},
            {"Position", qlonglong(positionS * 1e6)},
            {"Metadata", QVariantMap{{"mpris:trackid", QVariant::fromValue(QDBusObjectPath(
                                                           "/com/spotify/track/" + id))},
                                     {"xesam:title", id},
                                     {"mpris:length", qlonglong(200'000'000)}}}};
}

QCoro::Task<void> outcomeOf(QCoro::Task<void> task, QString* out) {
    try {
        co_await std::move(task);
        *out = QStringLiteral("started");
    } catch (const SpotifyError& e) {
        *out = e.isCancellation() ? QStringLiteral("cancelled") : e.localizedDescription();
    }
}

QString focusLog() {
    FocusLog::shared().flush();
    return QString::fromUtf8(readFile(FocusLog::shared().path()).value_or(QByteArray()));
}
} // namespace

class tst_SpotifyPlayRequest : public QObject {
    Q_OBJECT

    struct Rig {
        QTemporaryDir dir;
        Preferences prefs{dir.filePath("prefs.conf")};
        MirlTest::FakeMprisPlayer spotify{qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                          Mpris::spotifyName.toString()};
        MprisPlayerBridge bridge{prefs, QDBusConnection::sessionBus()};
        PlayerState state{&bridge};
        FakeSpotifyServer server;
        std::unique_ptr<SpotifyLibrary> library;
        X11Workspace workspace;
        std::unique_ptr<SpotifyPlayRequest> requests;
        explicit Rig(bool signedIn) {
            QFile::remove(SpotifyLibrary::signInFilePath());
            if (signedIn)
                writePrivateFile(SpotifyLibrary::signInFilePath(),
                                 QJsonDocument(QJsonObject{{kClient, "refresh-0"}}).toJson());
            library = std::make_unique<SpotifyLibrary>(prefs, Clock::system(), kClient);
            library->setEndpoints({server.apiBase(), server.authorizeURL(), server.tokenURL()});
            library->setMachineName(QStringLiteral("Office Desktop"));
            library->setLogSink([](const QString& line) { FocusLog::shared().logLine(line); });
            FocusLog::shared().flush();
            QFile::remove(FocusLog::shared().path());
            requests = std::make_unique<SpotifyPlayRequest>(state, *library, workspace);
            workspace.setActivationHandler([this](auto event, const auto& app) {
                requests->focusGuard().noteActivation(event, app);
            });
            spotify.setPlayerProperties(playingTrack("old"));
            state.start();
        }
        QCoro::Task<void> play(const QString& id, std::optional<QString> context, QString* out) {
            SpotifyPlaybackSelection selection("spotify:track:" + id, context);
            selection.title = "Chosen " + id;
            return outcomeOf(state.playSpotify(selection), out);
        }
        bool asked(const QString& route) const {
            for (const auto& r : server.apiRequests())
                if (QString::fromLatin1(r.method) + u' ' + r.path == route)
                    return true;
            return false;
        }
    };

private Q_SLOTS:
    void aSongCountsAsStartedOnlyWhenTheClientPlaysIt_data() {
        QTest::addColumn<bool>("signedIn");
        QTest::addColumn<QString>("devices");
        QTest::addColumn<QString>("context");
        QTest::addColumn<QString>("playsAfter"); // the API request after which the client plays
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<QString>("clientCalls");
        QTest::addColumn<QString>("logLine");
        const QString computer =
            R"({"devices":[{"id":"d1","name":"Office Desktop","type":"Computer"}]})";
        QTest::newRow("Connect in the album") << true << computer << "spotify:album:al1"
                                              << "PUT /v1/me/player/play"
                                              << "started"
                                              << ""
                                              << "Spotify Connect started the song";
        QTest::newRow("Connect queues, then a skip") << true << computer << ""
                                                     << "POST /v1/me/player/queue"
                                                     << "started"
                                                     << "Next()"
                                                     << "next track (to the queued song)";
        QTest::newRow("Connect accepted but nothing plays")
            << true << computer << "spotify:album:al1"
            << "" << SpotifyPlayRequest::notStartedMessage << ""
            << "Spotify Connect couldn't start the song: Spotify didn’t start this song.";
        QTest::newRow("no computer of the account") << true << R"({"devices":[]})"
                                                    << ""
                                                    << "" << SpotifyLibrary::noDeviceMessage << ""
                                                    << "";
        QTest::newRow("not connected: the client opens it")
            << false << ""
            << ""
            << "client"
            << "started"
            << "OpenUri(spotify:track:t1)"
            << "FALLBACK MPRIS play track spotify:track:t1";
        QTest::newRow("not connected, the client ignores it")
            << false << ""
            << ""
            << "" << SpotifyPlayRequest::clientFailedMessage << "OpenUri(spotify:track:t1)"
            << "Spotify Connect skipped: not connected";
    }
    void aSongCountsAsStartedOnlyWhenTheClientPlaysIt() {
        QFETCH(bool, signedIn);
        QFETCH(QString, devices);
        QFETCH(QString, context);
        QFETCH(QString, playsAfter);
        QFETCH(QString, outcome);
        QFETCH(QString, clientCalls);
        QFETCH(QString, logLine);
        Rig rig(signedIn);
        rig.server.routeJSON("GET /v1/me/player/devices", devices.toUtf8());
        rig.server.routeFixture("GET /v1/me/player", "player.json");
        rig.server.route("PUT /v1/me/player/play", {204, {}, {}, 0});
        rig.server.route("POST /v1/me/player/queue", {204, {}, {}, 0});
        rig.spotify.setOpensUris(playsAfter == u"client");
        QString out;
        auto task = rig.play("t1", context.isEmpty() ? std::nullopt : std::optional(context), &out);
        QCOMPARE(rig.state.title(), QStringLiteral("Chosen t1")); // shown at once
        if (playsAfter.startsWith(u"P")) {
            QTRY_VERIFY(rig.asked(playsAfter));
            rig.spotify.setPlayerProperties(playingTrack("t1"));
        }
        QTRY_VERIFY_WITH_TIMEOUT(!out.isEmpty(), 12000);
        QCOMPARE(out, outcome);
        QCOMPARE(rig.state.spotifyPlaybackErrorText(), outcome == u"started" ? QString() : outcome);
        QCOMPARE(rig.spotify.commands().join(u' '), clientCalls);
        QVERIFY2(focusLog().contains(logLine), qPrintable(focusLog()));
        // After a failure the display returns to what the client plays.
        QTRY_COMPARE(rig.state.trackURIText(),
                     outcome == u"started" ? "spotify:track:t1" : "spotify:track:old");
    }

    void aNewerRequestCancelsTheOlderOne() {
        Rig rig(false);
        rig.spotify.setOpensUris(true);
        QString first, second;
        auto a = rig.play("a1", std::nullopt, &first);
        auto b = rig.play("b2", std::nullopt, &second);
        QTRY_VERIFY_WITH_TIMEOUT(!first.isEmpty() && !second.isEmpty(), 12000);
        QCOMPARE(first + u' ' + second, QStringLiteral("cancelled started"));
        QTRY_COMPARE(rig.state.trackURIText(), QStringLiteral("spotify:track:b2"));
        QCOMPARE(rig.spotify.commands(),
                 QStringList({"OpenUri(spotify:track:a1)", "OpenUri(spotify:track:b2)"}));
    }

    void theQueueHandsOverTheNextSongAtTheEnd_data() {
        QTest::addColumn<bool>("opens");
        QTest::addColumn<int>("left");
        QTest::addColumn<QString>("error");
        QTest::newRow("the client plays it") << true << 0 << "";
        QTest::newRow("the client ignores it")
            << false << 1 << SpotifyPlayRequest::clientFailedMessage;
    }
    void theQueueHandsOverTheNextSongAtTheEnd() {
        QFETCH(bool, opens);
        QFETCH(int, left);
        QFETCH(QString, error);
        Rig rig(false);
        rig.spotify.setOpensUris(opens);
        SpotifyQueue queue;
        queue.attach(rig.state);
        SpotifyItem next;
        next.uri = next.id = QStringLiteral("spotify:track:n1");
        next.name = QStringLiteral("Next one");
        queue.toggle(next);
        rig.spotify.setPlayerProperties(playingTrack("old", 199.5));
        QTRY_VERIFY(queue.busy());
        queue.clear(); // edits wait for the handoff
        QTRY_VERIFY_WITH_TIMEOUT(!queue.busy(), 12000);
        QCOMPARE(queue.count(), left); // a song leaves the queue only once it plays
        QCOMPARE(queue.errorText(), error);
        QCOMPARE(rig.spotify.commands(), QStringList{"OpenUri(spotify:track:n1)"});
    }

    void spotifyTakingTheFocusAfterAFallbackIsPushedBack() {
        MirlPlayer::Test::StandInWindowManager manager;
        ForeignWindow editor(QRect(0, 0, 400, 300), ForeignWindow::Options::ofClass("Editor"));
        ForeignWindow spotifyWindow(QRect(0, 0, 400, 300),
                                    ForeignWindow::Options::ofClass("Spotify"));
        editor.activate();
        Rig rig(false);
        QTRY_COMPARE(rig.workspace.frontmost().window, editor.id());
        QString out;
        auto task = rig.play("t1", std::nullopt, &out);
        QTRY_VERIFY(!rig.spotify.commands().isEmpty());
        spotifyWindow.activate(); // the client puts itself in front
        QTRY_COMPARE(rig.workspace.frontmost().window, editor.id());
        QCOMPARE(manager.sources.value(0), 2L);
        QVERIFY(focusLog().contains("focus given back to Editor"));
    }
};

MIRL_X11_TEST_MAIN(tst_SpotifyPlayRequest)
#include "tst_SpotifyPlayRequest.moc"
