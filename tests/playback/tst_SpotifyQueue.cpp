#include "fakes/FakePlayerBridge.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"
#include "playback/SpotifyQueue.h"
#include "spotify/SpotifyError.h"

#include <QCoro/QCoroSignal>
#include <QTest>

using namespace MirlPlayer;

namespace {
SpotifyItem song(const QString& id) {
    SpotifyItem item;
    item.id = item.uri = QStringLiteral("spotify:track:") + id;
    item.name = QStringLiteral("Song ") + id;
    item.kind = QStringLiteral("track");
    return item;
}
Snapshot spotifyAt(const QString& id, double position, double duration, bool playing = true) {
    return track(Source::spotify, id, playing, position * 1000, duration * 1000,
                 QStringLiteral("spotify:track:") + id);
}
} // namespace

class tst_SpotifyQueue : public QObject {
    Q_OBJECT

    struct Rig {
        ManualClock clock;
        FakePlayerBridge bridge;
        PlayerState state{&bridge, clock};
        SpotifyQueue queue{clock};
        QStringList requested;
        std::optional<QString> failWith;
        Rig() {
            queue.attach(state);
            state.start();
            state.setPlayRequester([this](const SpotifyPlaybackSelection& s) -> QCoro::Task<void> {
                requested << s.trackURI + u'|' + s.title.value_or(QString());
                if (failWith)
                    throw SpotifyFailure(*failWith);
                co_return;
            });
        }
        void sample(const Snapshot& spotify) {
            clock.advance(1);
            state.controller()->merge(spotify, Snapshot::empty(Source::music), clock.now());
        }
    };

private Q_SLOTS:
    void handsOverAtTheEndAndKeepsTheSongOnFailure_data() {
        QTest::addColumn<QString>("failure");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("plays") << "" << QStringList{"spotify:track:y"};
        QTest::newRow("fails") << "Spotify didn’t start this song. Try again."
                               << QStringList{"spotify:track:x", "spotify:track:y"};
    }
    void handsOverAtTheEndAndKeepsTheSongOnFailure() {
        QFETCH(QString, failure);
        QFETCH(QStringList, left);
        Rig rig;
        if (!failure.isEmpty())
            rig.failWith = failure;
        rig.queue.toggle(song("x"));
        rig.queue.toggle(song("y"));
        rig.sample(spotifyAt("a", 100, 200));
        rig.sample(spotifyAt("b", 1, 180)); // a skip in mid-song leaves the queue alone
        QVERIFY(!rig.queue.busy());
        rig.sample(spotifyAt("b", 177, 180));
        QVERIFY(rig.queue.boundaryArmed());
        rig.sample(spotifyAt("c", 0, 150)); // the player went on by itself
        QVERIFY(rig.queue.busy());
        rig.queue.toggle(song("z")); // edits wait for the handoff
        rig.queue.clear();
        QTRY_VERIFY(!rig.queue.busy());
        QCOMPARE(rig.requested, QStringList{"spotify:track:x|Song x"});
        QStringList uris;
        for (const SpotifyItem& item : rig.queue.tracks())
            uris << item.uri;
        QCOMPARE(uris, left);
        QCOMPARE(rig.queue.errorText(), failure);
        QCOMPARE(rig.state.spotifyPlaybackErrorText(), QString()); // the requester's own concern
        // The same boundary is not tried again; "Play next" is the way to retry.
        rig.sample(spotifyAt("c", 1, 150));
        QCOMPARE(rig.requested.size(), 1);
    }

    void editingTheFirstSongOutCancelsItsPreparation() {
        Rig rig;
        QObject never;
        rig.queue.setResolver(
            [&never](SpotifyItem item,
                     std::optional<QString>) -> QCoro::Task<SpotifyPlaybackSelection> {
                co_await qCoro(&never, &QObject::objectNameChanged);
                co_return SpotifyQueue::selectionOf(item);
            });
        rig.queue.toggle(song("x"));
        rig.queue.toggle(song("y"));
        rig.sample(spotifyAt("a", 195, 200));
        const auto preparation = rig.queue.preparation();
        QVERIFY(preparation && preparation->uri == u"spotify:track:x");
        rig.queue.move(song("y"), -1);
        QVERIFY(preparation->cancelled && preparation->done);
        QVERIFY(!rig.queue.preparation());
        rig.queue.move(song("y"), -1); // out of range: nothing
        QCOMPARE(rig.queue.tracks().first().uri, QStringLiteral("spotify:track:y"));
    }
};

QTEST_MAIN(tst_SpotifyQueue)
#include "tst_SpotifyQueue.moc"
