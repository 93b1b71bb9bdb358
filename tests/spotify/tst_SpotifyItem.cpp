#include "spotify/SpotifyItem.h"

#include "FakeSpotifyServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace MirlPlayer;

namespace {
QJsonObject fixtureObject(const QString& name) {
    return QJsonDocument::fromJson(FakeSpotifyServer::fixture(name)).object();
}
QJsonObject parse(const char* json) {
    return QJsonDocument::fromJson(json).object();
}
} // namespace

class tst_SpotifyItem : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void savedTracksPageUnwrapsTracksAndDropsLocalFiles() {
        const SpotifyPage page = pageFromJSON(fixtureObject("saved_tracks.json"));
        QCOMPARE(page.items.size(), 2);
        QCOMPARE(page.total, 1204);
        QCOMPARE(page.next,
                 QStringLiteral("https://api.spotify.com/v1/me/tracks?offset=30&limit=30"));

        const SpotifyItem& first = page.items[0];
        QCOMPARE(first.id, QStringLiteral("spotify:track:11dFghVXANMlKmJXsNCbNl"));
        QCOMPARE(first.uri, first.id);
        QCOMPARE(first.kind, QStringLiteral("track"));
        QCOMPARE(first.subtitle, QStringLiteral("Tessa Morrow, The Quiet Ones"));
        // The track's covers come from its album, smallest and largest.
        QCOMPARE(first.image, QUrl("https://i.scdn.co/image/ab67616d00004851small"));
        QCOMPARE(first.largeImage, QUrl("https://i.scdn.co/image/ab67616d0000b273large"));
        QCOMPARE(first.durationMs, 215360);
        QVERIFY(first.explicit_);
        QCOMPARE(first.albumURI, QStringLiteral("spotify:album:2up3OPMp9Tb4dAKM2erWXQ"));
        QCOMPARE(first.albumName, QStringLiteral("Harbour Lights"));
        QCOMPARE(first.detail, QString());
        QCOMPARE(first.artistIDs,
                 QStringList({"0OdUWJ0sBjDrqHygGUXeCF", "3dBVyJ7JuOMt4GE9607Qin"}));

        // An artist without an id counts for the subtitle only.
        const SpotifyItem& second = page.items[1];
        QCOMPARE(second.subtitle, QStringLiteral("Unlisted Guest, Noor Halvorsen"));
        QCOMPARE(second.artistIDs, QStringList({"7jy3rLJdDQY21OgRLCZ9sD"}));
        QCOMPARE(second.artistNames, QStringList({"Noor Halvorsen"}));
        QVERIFY(!second.explicit_);
        QVERIFY(!second.image && !second.largeImage);
    }

    void playlistEntriesKeepTracksAndDropEpisodesAndGaps() {
        const SpotifyPage page = pageFromJSON(fixtureObject("playlist_items.json"));
        QCOMPARE(page.items.size(), 2);
        QCOMPARE(page.items[0].name, QStringLiteral("Snowline"));    // wrapped in "item"
        QCOMPARE(page.items[1].name, QStringLiteral("Tail Lights")); // wrapped in "track"
        QCOMPARE(page.items[1].image, page.items[1].largeImage);
        QVERIFY(!page.next);
        QCOMPARE(page.total, 5);
    }

    void playlistsAndSearchAnswers() {
        const SpotifyPage playlists = pageFromJSON(fixtureObject("playlists.json"));
        QCOMPARE(playlists.items.size(), 2);
        QCOMPARE(playlists.items[0].subtitle, QStringLiteral("Playlist"));
        QCOMPARE(playlists.items[0].image, QUrl("https://mosaic.scdn.co/60/road"));
        QCOMPARE(playlists.items[0].largeImage, QUrl("https://mosaic.scdn.co/640/road"));
        QVERIFY(!playlists.items[1].image); // "images": null

        // The caller takes the search wrapper off first.
        const SpotifyPage search =
            pageFromJSON(fixtureObject("search_tracks.json").value("tracks").toObject());
        QCOMPARE(search.items.size(), 1);
        QCOMPARE(search.total, 57);
        QVERIFY(search.next);
    }

    void albumLabelRules_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("label"); // empty: none
        QTest::newRow("album") << QByteArray(R"({"album_type":"album"})") << "Album";
        QTest::newRow("compilation")
            << QByteArray(R"({"album_type":"compilation"})") << "Compilation";
        QTest::newRow("single of four")
            << QByteArray(R"({"album_type":"single","total_tracks":4})") << "EP";
        QTest::newRow("single of three")
            << QByteArray(R"({"album_type":"single","total_tracks":3})") << "Single";
        QTest::newRow("single, count not a number")
            << QByteArray(R"({"album_type":"single","total_tracks":"9"})") << "Single";
        QTest::newRow("single, count beyond any integer")
            << QByteArray(R"({"album_type":"single","total_tracks":1e300})") << "Single";
        QTest::newRow("appears_on") << QByteArray(R"({"album_type":"appears_on"})") << "";
        QTest::newRow("missing") << QByteArray(R"({})") << "";
    }
    void albumLabelRules() {
        QFETCH(QByteArray, json);
        QFETCH(QString, label);
        const auto result = albumLabel(QJsonDocument::fromJson(json).object());
        QCOMPARE(result.value_or(QString()), label);
        QCOMPARE(result.has_value(), !label.isEmpty());
    }

    void objectsThatAreNoItem_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("episode") << QByteArray(
            R"({"id":"a","name":"n","uri":"spotify:episode:a","type":"episode"})");
        QTest::newRow("id not a string")
            << QByteArray(R"({"id":5,"name":"n","uri":"u","type":"track"})");
        QTest::newRow("no uri") << QByteArray(R"({"id":"a","name":"n","type":"track"})");
        QTest::newRow("no name") << QByteArray(R"({"id":"a","uri":"u","type":"album"})");
    }
    void objectsThatAreNoItem() {
        QFETCH(QByteArray, json);
        QVERIFY(!itemFromJSON(QJsonDocument::fromJson(json).object()));
    }

    void storedFormRoundTripsAndRejectsMissingKeys() {
        const SpotifyPage page = pageFromJSON(fixtureObject("saved_tracks.json"));
        for (const SpotifyItem& item : page.items) {
            const QJsonObject stored = item.toStored();
            QCOMPARE(SpotifyItem::fromStored(stored), item);
        }
        const QJsonObject stored = page.items[1].toStored();
        QVERIFY(!stored.contains("image")); // absent optionals are left out
        QCOMPARE(stored.value("durationMs").toInt(), 187000);
        QVERIFY(stored.contains("explicit"));
        for (const char* key : {"id", "name", "subtitle", "kind", "uri", "detail", "explicit",
                                "artistIDs", "artistNames"}) {
            QJsonObject broken = stored;
            broken.remove(key);
            QVERIFY2(!SpotifyItem::fromStored(broken), key);
        }
        QJsonObject wrongType = stored;
        wrongType.insert("durationMs", "long");
        QVERIFY(!SpotifyItem::fromStored(wrongType));
    }
};

QTEST_GUILESS_MAIN(tst_SpotifyItem)
#include "tst_SpotifyItem.moc"
