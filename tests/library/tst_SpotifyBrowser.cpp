#include "LibraryWorld.h"
#include "library/ArtistPageModel.h"
#include "library/LibraryModule.h"
#include "library/LibraryViewModel.h"
#include "library/SpotifyBrowser.h"

#include <QQmlComponent>
#include <QQmlEngine>

using namespace LibraryTest;

namespace {

QStringList names(const SpotifyItemListModel& model) {
    QStringList out;
    for (const SpotifyItem& item : model.items())
        out.append(item.name);
    return out;
}

bool likedRow(const SpotifyItemListModel& model, const QString& name) {
    for (int row = 0; row < model.count(); ++row)
        if (model.items().at(row).name == name)
            return model.data(model.index(row), SpotifyItemListModel::LikedRole).toBool();
    return false;
}

} // namespace

class tst_SpotifyBrowser : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // After a restart the list shows from memory; only an old one is asked for again, behind it.
    void restartOpensFromMemory_data() {
        QTest::addColumn<double>("age");
        QTest::addColumn<int>("listRequests");
        QTest::newRow("fresh") << 60.0 << 0;
        QTest::newRow("older than ten minutes") << 700.0 << 1;
    }
    void restartOpensFromMemory() {
        QFETCH(double, age);
        QFETCH(int, listRequests);
        World world;
        world.route(QStringLiteral("GET /v1/me/playlists"), QStringLiteral("playlists.json"));
        MemorySnapshot stored;
        stored.owner = kOwner;
        const QList<SpotifyItem> playlists = world.itemsOf(QStringLiteral("playlists.json"));
        stored.pages.insert(QStringLiteral("me/playlists?limit=30"),
                            {playlists.mid(0, 1), std::nullopt, 1, world.clock.wallNow() - age});
        QVERIFY(writePrivateFile(world.memoryFile(), encodeMemory(stored)));
        auto memory = world.memory();
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        QVERIFY(finish(browser.prepare()));
        QCOMPARE(browser.list()->items(), playlists.mid(0, 1));
        QTest::qWait(200);
        QCOMPARE(world.requestsTo(QStringLiteral("/v1/me/playlists")), listRequests);
        QCOMPARE(browser.list()->count(), listRequests ? playlists.size() : 1);
        QCOMPARE(world.server.apiRequestCount(), 1 + listRequests); // the owner check
    }

    // The filter over a complete Liked Songs comes from memory: case and accents do not matter.
    void filterLikedSongs_data() {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("accents ignored") << "beyonce" << QStringList{"Beyoncé Nights"};
        QTest::newRow("case ignored") << "CAFÉ" << QStringList{"Café Lumière"};
        QTest::newRow("sharp s") << "strasse" << QStringList{"Straße der Nacht"};
        QTest::newRow("inner words") << "ern li" << QStringList{"Northern Line"};
        QTest::newRow("blank is no filter: the first page")
            << "  " << QStringList{"Café Lumière", "Beyoncé Nights", "Northern Line"};
        QTest::newRow("nothing") << "lumiere nights" << QStringList{};
    }
    void filterLikedSongs() {
        QFETCH(QString, filter);
        QFETCH(QStringList, shown);
        World world;
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_1.json"));
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_2.json"));
        auto memory = world.memory();
        QVERIFY(finish(memory->syncSaved()));
        world.server.clearRoute(QStringLiteral("GET /v1/me/tracks"));
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_1.json"));
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        browser.selectTab(QStringLiteral("Liked Songs"));
        QVERIFY(QTest::qWaitFor([&] { return !browser.loading(); }, 3000));
        const int before = world.server.apiRequestCount();
        browser.setFilter(filter);
        QCOMPARE(names(*browser.list()), shown);
        QCOMPARE(world.server.apiRequestCount(), before);
    }

    // A filter over a list not loaded to its end pages through it, and says how far it has come.
    void aFilterPagingThroughTellsItsProgress() {
        World world;
        world.route(QStringLiteral("GET /v1/playlists/p1/items"),
                    QStringLiteral("saved_crawl_1.json"));
        auto memory = world.memory();
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        SpotifyItem playlist;
        playlist.id = QStringLiteral("p1");
        playlist.name = QStringLiteral("P");
        playlist.kind = QStringLiteral("playlist");
        playlist.uri = QStringLiteral("spotify:playlist:p1");
        browser.openItem(playlist);
        QVERIFY(QTest::qWaitFor([&] { return browser.list()->count() == 3; }, 3000));
        QCOMPARE(browser.searchProgress(), QStringLiteral("Searching…"));
        browser.setFilter(QStringLiteral("zz"));
        QCOMPARE(browser.searchProgress(), QStringLiteral("Searching 3 of 5…"));
        QTest::qWait(200); // the next page's request lands before the browser goes
    }

    // A like shows at once in every list that holds the song, reaches Spotify and the memory, and
    // an unlike leaves the artist's liked section at once.
    void likeUpdatesEveryList() {
        World world;
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_1.json"));
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_2.json"));
        world.route(QStringLiteral("GET /v1/artists/7jy3rLJdDQY21OgRLCZ9sD"),
                    QStringLiteral("artist.json"));
        world.route(QStringLiteral("GET /v1/search"), QStringLiteral("artist_popular.json"));
        world.route(QStringLiteral("GET /v1/artists/7jy3rLJdDQY21OgRLCZ9sD/albums"),
                    QStringLiteral("artist_albums.json"));
        world.server.routeJSON(QStringLiteral("GET /v1/me/library/contains"), "[false, true]");
        world.server.route(QStringLiteral("PUT /v1/me/library"), {200, {}, {}, 0});
        world.server.route(QStringLiteral("DELETE /v1/me/library"), {200, {}, {}, 0});
        auto memory = world.memory();
        QVERIFY(finish(memory->syncSaved()));
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        ArtistPageModel page(*world.library, *memory, browser, world.clock);
        page.loadArtist(QStringLiteral("spotify:artist:7jy3rLJdDQY21OgRLCZ9sD"),
                        QStringLiteral("Noor Halvorsen"));
        QVERIFY(QTest::qWaitFor([&] { return browser.liked().size() == 2; }, 3000));
        QCOMPARE(names(*page.popularModel()), QStringList({"Fjord Light", "Café Lumière"}));
        QCOMPARE(names(*page.likedModel()), QStringList({"Café Lumière", "Northern Line"}));

        // A click on a liked song plays it in Liked Songs, named on the card at once.
        PointerGuard guard;
        LibraryViewModel view(*world.library, browser, *memory, world.clock, guard);
        view.doubleClickInterval = [] { return 0.0; };
        std::optional<SpotifyPlaybackSelection> played;
        view.play = [&](SpotifyPlaybackSelection selection) -> QCoro::Task<void> {
            played = selection;
            co_return;
        };
        view.rowClicked(page.likedModel(), 0, QStringLiteral("liked"));
        QVERIFY(QTest::qWaitFor([&] { return played.has_value(); }, 1000));
        QCOMPARE(played->contextURI, kOwner);
        QCOMPARE(played->title, QStringLiteral("Café Lumière"));

        const SpotifyItem fjord = page.popular().first();
        browser.recordRecent(fjord);
        browser.selectTab(QStringLiteral("Search"));
        QCOMPARE(names(*browser.list()), QStringList{"Fjord Light"});
        QVERIFY(!likedRow(*browser.list(), "Fjord Light"));

        browser.setLiked(fjord, true);
        for (const SpotifyItemListModel* model :
             {browser.list(), browser.recentsModel(), page.popularModel(), page.likedModel()})
            QVERIFY(likedRow(*model, "Fjord Light"));
        QCOMPARE(names(*page.likedModel()),
                 QStringList({"Café Lumière", "Northern Line", "Fjord Light"}));
        QVERIFY(
            QTest::qWaitFor([&] { return memory->data().saved.first().name == "Fjord Light"; }));
        QCOMPARE(world.requestsTo("/v1/me/library"), 1);

        browser.setLiked(page.popular().at(1), false);
        QCOMPARE(names(*page.likedModel()), QStringList({"Fjord Light", "Northern Line"}));
        QVERIFY(QTest::qWaitFor([&] { return memory->data().saved.size() == 4; }));
    }

    // A clicked song is played inside the list it was clicked in, with the songs after it.
    void playRequestCarriesItsList_data() {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("context");
        QTest::newRow("a playlist") << "playlist"
                                    << "spotify:playlist:37i9dQZF1DXcBWIGoYBM5M";
        QTest::newRow("Liked Songs") << "Liked Songs" << kOwner;
    }
    void playRequestCarriesItsList() {
        QFETCH(QString, list);
        QFETCH(QString, context);
        World world;
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_1.json"));
        world.route(QStringLiteral("GET /v1/playlists/37i9dQZF1DXcBWIGoYBM5M/items"),
                    QStringLiteral("playlist_items.json"));
        auto memory = world.memory();
        QVERIFY(finish(memory->prepareMemory()));
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        if (list == u"playlist")
            browser.openItem(world.itemsOf(QStringLiteral("playlists.json")).first());
        else
            browser.selectTab(list);
        QVERIFY(QTest::qWaitFor([&] { return browser.list()->count() >= 2; }, 3000));
        const QList<SpotifyItem> shown = browser.list()->items();
        const auto selection = browser.selectionFor(shown.first());
        QVERIFY(selection);
        QCOMPARE(selection->trackURI, shown.first().uri);
        QCOMPARE(selection->contextURI, context);
        QCOMPARE(selection->title, shown.first().name);
        QStringList following;
        for (const SpotifyItem& item : shown.mid(1))
            following.append(item.uri);
        QCOMPARE(selection->following, following);
        // The list's further pages are still on their way: they land while the service lives.
        QTest::qWait(300);
    }

    // The view binds to the shared models through the module.
    void qmlSeesTheSharedModels() {
        QQmlEngine engine;
        useLibraryModule(engine);
        QQmlComponent component(&engine);
        component.setData("import QtQml\nimport MirlPlayer.Library\nQtObject {"
                          " property string tab: SpotifyBrowser.tab;"
                          " property int rows: SpotifyBrowser.list.count;"
                          " property bool crawling: SpotifyMemory.loading }",
                          QUrl());
        std::unique_ptr<QObject> object(component.create());
        QVERIFY2(object, qPrintable(component.errorString()));
        QCOMPARE(object->property("tab").toString(), QStringLiteral("Playlists"));
        QCOMPARE(object->property("rows").toInt(), 0);
    }

    // A failed like is taken back exactly and says why.
    void failedLikeIsTakenBack() {
        World world;
        world.server.routeJSON(QStringLiteral("PUT /v1/me/library"), "{}", 500);
        auto memory = world.memory();
        SpotifyBrowser browser(*world.library, *memory, world.prefs, world.clock);
        const SpotifyItem track = world.itemsOf(QStringLiteral("saved_crawl_1.json")).first();
        browser.setLiked(track, true);
        QVERIFY(browser.isLiked(track));
        QVERIFY(QTest::qWaitFor([&] { return !browser.likeErrorText().isEmpty(); }, 3000));
        QVERIFY(!browser.liked().contains(track.uri));
        QCOMPARE(browser.likeErrorText(),
                 QStringLiteral("Spotify couldn’t load this content (500). Please try again."));
    }
};

QTEST_GUILESS_MAIN(tst_SpotifyBrowser)
#include "tst_SpotifyBrowser.moc"
