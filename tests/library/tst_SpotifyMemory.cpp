#include "LibraryWorld.h"

#include <QFile>
#include <QFileInfo>

using namespace LibraryTest;

class tst_SpotifyMemory : public QObject {
    Q_OBJECT

    // A full memory: saved songs, a page, positions, navigation and an artist.
    static QByteArray fullFile(World& world) {
        MemorySnapshot s;
        s.owner = kOwner;
        s.saved = world.itemsOf(QStringLiteral("saved_crawl_1.json"));
        s.savedNext = QStringLiteral("me/tracks?offset=3&limit=50");
        s.pages.insert(QStringLiteral("me/playlists?limit=30"),
                       {world.itemsOf(QStringLiteral("playlists.json")), std::nullopt, 2, 1.7e9});
        s.positions.insert(QStringLiteral("Playlists"), QStringLiteral("row:4"));
        SpotifyRoute route;
        route.title = QStringLiteral("Salt Hours");
        route.path = QStringLiteral("albums/5Z/tracks?limit=30");
        route.image = QUrl(QStringLiteral("https://i.scdn.co/image/sh-640"));
        s.navigation = MemoryNavigation{QStringLiteral("Liked Songs"),
                                        {},
                                        QStringLiteral("track"),
                                        {route},
                                        QStringLiteral("caf")};
        s.artists.emplace();
        s.artists->insert(QStringLiteral("spotify:artist:7jy3rLJdDQY21OgRLCZ9sD"),
                          {std::nullopt, s.saved.mid(0, 1), {}, std::nullopt, 1.7e9});
        return encodeMemory(s);
    }

private Q_SLOTS:
    // A spoilt, truncated or foreign file is an empty memory, never a crash or a partial read.
    void spoiltFileStartsEmpty_data() {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<bool>("kept");
        QTest::newRow("intact") << QByteArray() << QByteArray() << true;
        QTest::newRow("item without name")
            << QByteArray("\"name\":\"Café") << QByteArray("\"nome\":\"Café") << false;
        QTest::newRow("complete as text")
            << QByteArray("\"complete\":false") << QByteArray("\"complete\":\"no\"") << false;
        QTest::newRow("duration with a fraction")
            << QByteArray("201000") << QByteArray("201000.5") << false;
        QTest::newRow("artist ids not strings")
            << QByteArray("\"artistIDs\":[\"7jy") << QByteArray("\"artistIDs\":[7,\"7jy") << false;
        QTest::newRow("route path a number")
            << QByteArray("\"path\":\"albums") << QByteArray("\"path\":5,\"x\":\"albums") << false;
        QTest::newRow("position not text") << QByteArray("\"row:4\"") << QByteArray("4") << false;
        QTest::newRow("artist page without date")
            << QByteArray("\"fetched\":7") << QByteArray("\"fetchd\":7") << false;
        QTest::newRow("saved is an object")
            << QByteArray("\"saved\":[") << QByteArray("\"saved\":{\"a\":[") << false;
        QTest::newRow("a list, not an object") << QByteArray("{\"") << QByteArray("[{\"") << false;
    }
    void spoiltFileStartsEmpty() {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(bool, kept);
        World world;
        QByteArray bytes = fullFile(world);
        if (!from.isEmpty()) {
            QVERIFY2(bytes.contains(from), from.constData());
            bytes.replace(bytes.indexOf(from), from.size(), to);
        }
        // Every row is also cut short at many places: no prefix of a file is a file.
        QList<qsizetype> cuts{bytes.size()};
        for (qsizetype at = 1; at < bytes.size(); at += bytes.size() / 61 + 1)
            cuts.append(at);
        cuts.append(bytes.size() - 1);
        for (qsizetype cut : cuts) {
            QVERIFY(writePrivateFile(world.memoryFile(), bytes.left(cut)));
            const auto memory = world.memory();
            const bool whole = cut == bytes.size() && kept;
            QCOMPARE(memory->data().saved.size(), whole ? 3 : 0);
            QCOMPARE(memory->data().pages.size(), whole ? 1 : 0);
            QCOMPARE(memory->data().navigation.has_value(), whole);
            QCOMPARE(memory->data().savedNext.value_or(QString()),
                     whole ? QStringLiteral("me/tracks?offset=3&limit=50")
                           : MemorySnapshot::firstSavedPage);
            if (whole)
                QCOMPARE(encodeMemory(memory->data()), bytes);
        }
    }

    // A 429 stops the crawl with the pause's words; after the pause it goes on where it stopped,
    // adds no duplicates, and the result survives a restart.
    void crawlPausesOn429AndResumes() {
        World world;
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_1.json"));
        world.server.route(QStringLiteral("GET /v1/me/tracks"),
                           {429, "{}", {{"Retry-After", "30"}}});
        world.route(QStringLiteral("GET /v1/me/tracks"), QStringLiteral("saved_crawl_2.json"));
        auto memory = world.memory();
        QVERIFY(finish(memory->syncSaved()));
        QCOMPARE(memory->error(), world.library->rateLimitMessage());
        QCOMPARE(memory->data().saved.size(), 3);
        QVERIFY(!memory->complete() && !memory->loading());

        // Still paused: nothing is sent.
        QVERIFY(finish(memory->syncSaved()));
        QCOMPARE(world.requestsTo(QStringLiteral("/v1/me/tracks")), 2);

        world.clock.advance(31);
        // Two callers at once share one crawl.
        auto second = std::make_shared<bool>(false);
        [](SpotifyMemory* m, std::shared_ptr<bool> done) -> QCoro::Task<void> {
            co_await m->syncSaved();
            *done = true;
        }(memory.get(), second);
        QVERIFY(finish(memory->syncSaved()));
        QVERIFY(QTest::qWaitFor([&] { return *second; }, 3000));
        QCOMPARE(memory->error(), std::nullopt);
        QVERIFY(memory->complete());
        QCOMPARE(world.requestsTo(QStringLiteral("/v1/me/tracks")), 3);
        QCOMPARE(world.server.apiRequests().last().query.queryItemValue("offset"), "3");
        QStringList names;
        for (const SpotifyItem& item : memory->data().saved)
            names.append(item.name);
        QCOMPARE(names, QStringList({"Café Lumière", "Beyoncé Nights", "Northern Line",
                                     "Straße der Nacht"}));

        memory->flush();
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                          QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
        QCOMPARE(QFileInfo(world.memoryFile()).permissions() & (others | QFile::ExeOwner),
                 QFile::Permissions());
        const auto restarted = world.memory();
        QCOMPARE(restarted->data().saved, memory->data().saved);
        QVERIFY(restarted->complete());
        // Unproven after a restart: no like state until the owner is checked.
        QVERIFY(!restarted->isSavedInMemory(memory->data().saved.first().uri));
        QVERIFY(restarted->needsConfirmation());
    }

    // Clearing during a crawl stops it; its last answer changes nothing, and the file is gone.
    void clearDuringCrawlLeavesNothing() {
        World world;
        QByteArray page = world.here(QStringLiteral("saved_crawl_2.json"));
        world.server.route(QStringLiteral("GET /v1/me/tracks"),
                           {200, page, {{"Content-Type", "application/json"}}, 300});
        QVERIFY(writePrivateFile(world.memoryFile(), fullFile(world)));
        auto memory = world.memory();
        bool ended = false;
        [](SpotifyMemory* m, bool* flag) -> QCoro::Task<void> {
            co_await m->syncSaved();
            *flag = true;
        }(memory.get(), &ended);
        QVERIFY(QTest::qWaitFor([&] { return world.requestsTo("/v1/me/tracks") == 1; }, 3000));
        memory->clearMemory();
        QVERIFY(QTest::qWaitFor([&] { return ended; }, 3000));
        memory->flush();
        QVERIFY(memory->data().saved.isEmpty());
        QVERIFY(!memory->loading());
        QVERIFY(!QFile::exists(world.memoryFile()));

        // A reset while the file is still being read: what was read is dropped with it.
        QVERIFY(writePrivateFile(world.memoryFile(), fullFile(world)));
        SpotifyMemory reading(world.memoryFile(), SpotifyMemory::ownerFrom(*world.library),
                              SpotifyMemory::pagesFrom(*world.library), world.clock);
        reading.clearMemory();
        reading.waitUntilRead();
        QVERIFY(reading.isRead() && reading.data().saved.isEmpty());
        QVERIFY(!QFile::exists(world.memoryFile()));
    }
};

QTEST_GUILESS_MAIN(tst_SpotifyMemory)
#include "tst_SpotifyMemory.moc"
