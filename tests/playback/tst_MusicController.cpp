#include "core/FocusLog.h"
#include "fakes/FakePlayerBridge.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"

#include <QBuffer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

namespace {
const Snapshot noSpotify = Snapshot::empty(Source::spotify);
const Snapshot noMusic = Snapshot::empty(Source::music);

QString focusLogText() {
    FocusLog::shared().flush();
    QFile f(FocusLog::shared().path());
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}
} // namespace

class tst_MusicController : public QObject {
    Q_OBJECT

    struct Rig {
        ManualClock clock;
        FakePlayerBridge bridge;
        PlayerState state{&bridge, clock};
        MusicController* controller = nullptr;
        Rig() {
            state.start();
            controller = state.controller();
        }
        // One sample, a little later than the one before.
        void sample(const Snapshot& spotify, const Snapshot& music, double dt = 0.125) {
            clock.advance(dt);
            // The background poll then sees the same players.
            bridge.setSnapshot(spotify);
            bridge.setSnapshot(music);
            controller->merge(spotify, music, clock.now());
        }
    };

    static QList<QSignalSpy*> spyAll(PlayerState& state) {
        QList<QSignalSpy*> spies;
        const QMetaObject* meta = state.metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod m = meta->method(i);
            if (m.methodType() == QMetaMethod::Signal && m.name().endsWith("Changed"))
                spies << new QSignalSpy(&state, m);
        }
        spies << new QSignalSpy(state.clock(), &PlaybackClock::positionChanged);
        return spies;
    }

private Q_SLOTS:
    void winnerTable_data() {
        QTest::addColumn<bool>("preferred");
        QTest::addColumn<Snapshot>("spotify");
        QTest::addColumn<Snapshot>("music");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("artist");
        const Snapshot sPlay = track(Source::spotify, "S", true);
        const Snapshot sPause = track(Source::spotify, "S", false);
        const Snapshot mPlay = track(Source::music, "M", true);
        const Snapshot mPause = track(Source::music, "M", false);
        QTest::newRow("both empty") << false << noSpotify << noMusic << "Nothing Playing"
                                    << "Open Spotify or your music player";
        QTest::newRow("preferred, Spotify empty")
            << true << noSpotify << mPlay << "Nothing playing in Spotify"
            << "Select a song above";
        QTest::newRow("preferred, Spotify has track") << true << sPause << mPlay << "S"
                                                      << "Artist of S";
        QTest::newRow("both playing") << false << sPlay << mPlay << "S"
                                      << "Artist of S";
        QTest::newRow("paused Spotify never beats playing Music") << false << sPause << mPlay << "M"
                                                                  << "Artist of M";
        QTest::newRow("both paused") << false << sPause << mPause << "S"
                                     << "Artist of S";
        QTest::newRow("only Music paused") << false << noSpotify << mPause << "M"
                                           << "Artist of M";
    }
    void winnerTable() {
        QFETCH(bool, preferred);
        QFETCH(Snapshot, spotify);
        QFETCH(Snapshot, music);
        QFETCH(QString, title);
        QFETCH(QString, artist);
        Rig rig;
        rig.controller->setBrowserActive(preferred);
        rig.sample(spotify, music);
        QCOMPARE(rig.state.title(), title);
        QCOMPARE(rig.state.artist(), artist);
    }

    void musicStartedByHandEndsTheSpotifySelection() {
        Rig rig;
        rig.controller->setSpotifySelected(true);
        rig.controller->setBrowserActive(true);
        rig.sample(track(Source::spotify, "S", false), track(Source::music, "M", false));
        rig.controller->setBrowserActive(false);
        QCOMPARE(rig.state.title(), QStringLiteral("S"));
        // Music starts by hand while Spotify is paused: the same sample already shows Music.
        rig.sample(track(Source::spotify, "S", false), track(Source::music, "M", true));
        QVERIFY(!rig.controller->routing().spotifySelected);
        QCOMPARE(rig.state.title(), QStringLiteral("M"));
        QCOMPARE(rig.state.sourceName(), QStringLiteral("Music"));
    }

    void selectionMadeWhileMusicPlaysStaysUntilMusicRestarts() {
        Rig rig;
        rig.sample(track(Source::spotify, "S", false), track(Source::music, "M", true));
        QVERIFY(rig.controller->routing().musicWasPlaying);
        rig.controller->setSpotifySelected(true);
        rig.sample(track(Source::spotify, "S", false), track(Source::music, "M", true));
        QVERIFY(rig.controller->routing().spotifySelected);
        QCOMPARE(rig.state.title(), QStringLiteral("S"));
        rig.sample(track(Source::spotify, "S", false), track(Source::music, "M", false));
        rig.sample(track(Source::spotify, "S", false), track(Source::music, "M", true));
        QVERIFY(!rig.controller->routing().spotifySelected);
        QCOMPARE(rig.state.title(), QStringLiteral("M"));
    }

    void browserOpenKeepsTheSelectionAgainstMusic() {
        Rig rig;
        rig.controller->setSpotifySelected(true);
        rig.controller->setBrowserActive(true);
        rig.sample(track(Source::spotify, "S", false), track(Source::music, "M", true));
        QVERIFY(rig.controller->routing().spotifySelected);
        QCOMPARE(rig.state.title(), QStringLiteral("S"));
    }

    void shortEmptyRepliesAreBridged() {
        Rig rig;
        const Snapshot s =
            track(Source::spotify, "S", true, 0, 300000, QStringLiteral("spotify:track:a"));
        rig.sample(s, noMusic);
        rig.sample(noSpotify, noMusic); // the empty run starts
        QCOMPARE(rig.state.title(), QStringLiteral("S"));
        rig.sample(noSpotify, noMusic, 0.875); // 0.875 s into the empty run
        QCOMPARE(rig.state.title(), QStringLiteral("S"));
        rig.sample(noSpotify, noMusic, 0.125); // 1.0 s
        QCOMPARE(rig.state.title(), QStringLiteral("Nothing Playing"));
        QVERIFY(!rig.state.trackURI().has_value());
        QCOMPARE(rig.state.duration(), 0.0);
        QVERIFY(!rig.state.isPlaying());
    }

    void playRequestIgnoresTheOldTrackUntilTheNewOneShows() {
        Rig rig;
        const QString a = QStringLiteral("spotify:track:A"), b = QStringLiteral("spotify:track:B");
        rig.sample(track(Source::spotify, "A", true, 0, 300000, a), noMusic);
        rig.controller->setSpotifyStartPending(true);
        rig.controller->expectTrack(b, rig.clock.now() + 4.0);
        rig.state.publishTitle("B (optimistic)");
        rig.sample(track(Source::spotify, "A", true, 5000, 300000, a), noMusic, 2.0);
        QCOMPARE(rig.state.title(), QStringLiteral("B (optimistic)"));
        // Past the four seconds, but the request still runs: still waiting.
        rig.sample(track(Source::spotify, "A", true, 5000, 300000, a), noMusic, 3.0);
        QCOMPARE(rig.state.title(), QStringLiteral("B (optimistic)"));
        rig.controller->setSpotifyStartPending(false);
        rig.sample(track(Source::spotify, "A", true, 5000, 300000, a), noMusic);
        QCOMPARE(rig.state.title(), QStringLiteral("A"));

        // The expected track ends the wait at once.
        rig.controller->expectTrack(b, rig.clock.now() + 4.0);
        rig.sample(track(Source::spotify, "B", true, 0, 300000, b), noMusic);
        QCOMPARE(rig.state.title(), QStringLiteral("B"));
    }

    void steadySampleAnnouncesNothing() {
        Rig rig;
        const Snapshot s =
            track(Source::spotify, "S", true, 1000, 300000, QStringLiteral("spotify:track:s"));
        rig.sample(s, noMusic);
        const auto spies = spyAll(rig.state);
        QVERIFY(spies.size() >= 11);
        rig.sample(s, noMusic);
        rig.sample(s, noMusic);
        for (QSignalSpy* spy : spies) {
            QCOMPARE(spy->count(), 0);
            delete spy;
        }
    }

    void sameTrackKeyKeepsArtworkAndPosition() {
        Rig rig;
        rig.sample(track(Source::spotify, "S", true, 100000), noMusic);
        const QString key = rig.controller->lastTrackKey();
        QCOMPARE(key, QStringLiteral("Spotify|S|Artist of S|Album"));
        // Another track with identical texts: no track change, so an older sample stays refused.
        rig.state.seek(200);
        rig.sample(track(Source::spotify, "S", true, 0), noMusic);
        QCOMPARE(rig.state.clock()->position(), 200.0);
        QCOMPARE(rig.controller->lastTrackKey(), key);
    }

    void lateArtworkOfASkippedTrackIsCachedNotShown() {
        QTemporaryDir dir;
        auto cover = [&](const QString& name, QColor colour) {
            QImage img(8, 8, QImage::Format_RGB32);
            img.fill(colour);
            const QString path = dir.filePath(name);
            img.save(path, "PNG");
            return QUrl::fromLocalFile(path).toString();
        };
        Rig rig;
        Snapshot a = track(Source::music, "A", true);
        a.artURL = cover("a.png", Qt::red);
        Snapshot b = track(Source::music, "B", true);
        b.artURL = cover("b.png", Qt::blue);
        rig.sample(noSpotify, a);
        rig.sample(noSpotify, b); // skipped before A's cover arrived
        QTRY_COMPARE(rig.controller->artCacheSize(), 2);
        QTRY_VERIFY(rig.state.hasArtwork());
        QCOMPARE(QColor(rig.state.artwork().pixel(0, 0)), QColor(Qt::blue));

        // Back to A: served from the cache.
        rig.sample(noSpotify, a);
        QCOMPARE(QColor(rig.state.artwork().pixel(0, 0)), QColor(Qt::red));

        // A track without a usable address clears the artwork and the accent, and the palette
        // of A, still on its way, is dropped when it lands.
        rig.state.publishAccent(Qt::green);
        rig.sample(noSpotify, track(Source::music, "C", true));
        QVERIFY(!rig.state.hasArtwork());
        QCOMPARE(rig.state.accent(), QColor(Qt::white));
        rig.controller->queue().sync([] {});
        QCoreApplication::processEvents();
        QCOMPARE(rig.state.accent(), QColor(Qt::white));

        // A cover that cannot be read shows no artwork, not the one before.
        rig.sample(noSpotify, a);
        Snapshot d = track(Source::music, "D", true);
        QFile broken(dir.filePath("d.png"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("not an image") > 0);
        broken.close();
        d.artURL = QUrl::fromLocalFile(broken.fileName()).toString();
        rig.sample(noSpotify, d);
        QTRY_VERIFY(!rig.state.hasArtwork());
    }

    void commandsGoToTheTargetAndAreLogged() {
        Rig rig;
        rig.state.previous(); // no source: nothing at all
        QCOMPARE(rig.controller->targetApp(), QString());
        QVERIFY(!focusLogText().contains("previous track"));

        rig.sample(noSpotify, track(Source::music, "M", true));
        QCOMPARE(rig.controller->targetApp(), QStringLiteral("Music"));
        rig.state.next();
        rig.controller->setBrowserActive(true);
        QCOMPARE(rig.controller->targetApp(), QStringLiteral("Spotify"));
        rig.state.togglePlayPause();
        QTRY_COMPARE(rig.bridge.commands().size(), 2);
        QCOMPARE(rig.bridge.commands(), (QStringList{"Music: next track", "Spotify: playpause"}));
        const QString log = focusLogText();
        QVERIFY(log.contains(" command: Music: next track\n"));
        QVERIFY(log.contains(" command: Spotify: playpause\n"));
    }

    void seekCompletesWithAStampAfterThePlayerMoved() {
        Rig rig;
        rig.sample(track(Source::spotify, "S", true, 1000), noMusic);
        rig.state.seek(20.5);
        QVERIFY(rig.state.pendingSeek().has_value());
        QTRY_VERIFY(!rig.state.pendingSeek().has_value());
        QCOMPARE(rig.bridge.commands().value(0), QStringLiteral("Spotify: seek 20.500"));
        QCOMPARE(rig.state.positionPollCutoff(), rig.clock.now());
        QVERIFY(focusLogText().contains(" command: Spotify: seek\n"));
    }

    void pollingCadenceFollowsThePanel() {
        Rig rig;
        rig.controller->setPollingFast(false);
        auto schedule = rig.controller->pollSchedule();
        QVERIFY(schedule.nextInMs > 2000);
        QCOMPARE(schedule.intervalMs, 3000);
        rig.controller->setPollingFast(false); // a repeat changes nothing
        QVERIFY(rig.controller->pollSchedule().nextInMs > 2000);
        // The panel expands: the next sample comes after 0.05 s, and from then on every second.
        rig.controller->setPollingFast(true);
        schedule = rig.controller->pollSchedule();
        QVERIFY2(schedule.nextInMs <= 50, qPrintable(QString::number(schedule.nextInMs)));
        QTRY_COMPARE_WITH_TIMEOUT(rig.controller->pollSchedule().intervalMs, 1000, 2000);
        QVERIFY(rig.controller->pollSchedule().nextInMs > 100); // not 50 ms
    }
};

QTEST_MAIN(tst_MusicController)
#include "tst_MusicController.moc"
