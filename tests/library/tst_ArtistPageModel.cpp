#include "LibraryWorld.h"
#include "library/ArtistPageModel.h"
#include "library/SpotifyBrowser.h"

using namespace LibraryTest;

namespace {
const QString kNoor = QStringLiteral("spotify:artist:7jy3rLJdDQY21OgRLCZ9sD");
const QString kTessa = QStringLiteral("spotify:artist:0OdUWJ0sBjDrqHygGUXeCF");
} // namespace

class tst_ArtistPageModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // An artist opens from the session, then the memory, then the Web API; a remembered page of
    // a day or more is shown and refreshed behind it.
    void opensFromEachCacheLevel_data() {
        QTest::addColumn<QString>("level");
        QTest::addColumn<int>("requests");
        QTest::newRow("network: artist, popular, releases") << "network" << 3;
        QTest::newRow("memory of 23 hours") << "memory 23h" << 0;
        QTest::newRow("memory of 24 hours: artist, popular") << "memory 24h" << 2;
        QTest::newRow("this session") << "session" << 0;
    }
    void opensFromEachCacheLevel() {
        QFETCH(QString, level);
        QFETCH(int, requests);
        World world;
        world.route(QStringLiteral("GET /v1/artists/7jy3rLJdDQY21OgRLCZ9sD"),
                    QStringLiteral("artist.json"));
        world.route(QStringLiteral("GET /v1/artists/0OdUWJ0sBjDrqHygGUXeCF"),
                    QStringLiteral("artist.json"));
        world.route(QStringLiteral("GET /v1/search"), QStringLiteral("artist_popular.json"));
        world.route(QStringLiteral("GET /v1/artists/7jy3rLJdDQY21OgRLCZ9sD/albums"),
                    QStringLiteral("artist_albums.json"));
        world.route(QStringLiteral("GET /v1/artists/0OdUWJ0sBjDrqHygGUXeCF/albums"),
                    QStringLiteral("artist_albums.json"));
        world.server.routeJSON(QStringLiteral("GET /v1/me/library/contains"), "[false, false]");
        const QList<SpotifyItem> popular =
            world.itemsOf(QStringLiteral("artist_popular.json"), QStringLiteral("tracks"));
        auto memory = world.memory();
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        if (level.startsWith(u"memory")) {
            const double age = level.endsWith(u"23h") ? 23 * 3600.0 : 24 * 3600.0;
            memory->storeArtist(
                kNoor,
                {std::nullopt, popular.mid(0, 1), {}, std::nullopt, world.clock.wallNow() - age});
        }
        ArtistPageModel page(*world.library, *memory, browser, world.clock);
        if (level.startsWith(u"session")) {
            page.loadArtist(kNoor, QStringLiteral("Noor Halvorsen"));
            QVERIFY(
                QTest::qWaitFor([&] { return page.artist() && !page.loadingReleases(); }, 3000));
            QTest::qWait(100);
            page.loadArtist(kTessa, QStringLiteral("Tessa Morrow"));
            QVERIFY(
                QTest::qWaitFor([&] { return page.artist() && !page.loadingReleases(); }, 3000));
            QTest::qWait(100);
        }
        const qsizetype before = world.server.apiRequests().size();
        page.loadArtist(kNoor, QStringLiteral("Noor Halvorsen"));
        QCOMPARE(page.artistURI(), kNoor);
        QCOMPARE(page.filter(), ArtistPageModel::Releases::All);
        if (level.startsWith(u"memory"))
            QCOMPARE(page.popular(), popular.mid(0, 1)); // shown at once in any case
        QTest::qWait(300);
        int sent = 0;
        for (const auto& request : world.server.apiRequests().mid(before))
            sent += !request.path.endsWith(u"/contains");
        QCOMPARE(sent, requests);
        QVERIFY(page.errorText().isEmpty());
        if (requests > 0) {
            // A live version with a hit's title and another artist's track are left out.
            QStringList names;
            for (const SpotifyItem& item : page.popular())
                names.append(item.name);
            QCOMPARE(names, QStringList({"Fjord Light", "Café Lumière"}));
        }
    }

    // An answer for a former filter is dropped after the filter changes.
    void formerFilterAnswerIsDropped() {
        World world;
        world.route(QStringLiteral("GET /v1/artists/7jy3rLJdDQY21OgRLCZ9sD"),
                    QStringLiteral("artist.json"));
        world.route(QStringLiteral("GET /v1/search"), QStringLiteral("artist_popular.json"));
        world.server.route(QStringLiteral("GET /v1/artists/7jy3rLJdDQY21OgRLCZ9sD/albums"),
                           {200, world.here("artist_albums.json"), {}, 400});
        world.server.routeJSON(QStringLiteral("GET /v1/artists/7jy3rLJdDQY21OgRLCZ9sD/albums"),
                               R"({"items": [], "next": null})");
        auto memory = world.memory();
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        ArtistPageModel page(*world.library, *memory, browser, world.clock);
        page.loadArtist(kNoor, QStringLiteral("Noor Halvorsen"));
        page.setFilter(ArtistPageModel::Releases::Singles);
        QTest::qWait(700);
        QVERIFY(!page.loadingReleases());
        QVERIFY(page.releases().isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_ArtistPageModel)
#include "tst_ArtistPageModel.moc"
