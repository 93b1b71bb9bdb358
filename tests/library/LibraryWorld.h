#pragma once

// A signed-in account session against the fake Web API, with a library memory of its own, for
// the library's model tests. Everything lives in a temporary folder.

#include "core/Clock.h"
#include "core/Preferences.h"
#include "core/PrivateFile.h"
#include "library/SpotifyMemory.h"
#include "spotify/FakeSpotifyServer.h"
#include "spotify/SpotifyLibrary.h"

#include <QCoro/QCoroTimer>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

namespace LibraryTest {

using namespace MirlPlayer;
using namespace std::chrono_literals;

inline const QString kClient = QStringLiteral("0123456789abcdef0123456789abcdef");
inline const QString kOwner = QStringLiteral("spotify:user:ann.k:collection");

// Drives a coroutine to its end on the test's event loop. False when it did not end in time.
template <typename T> bool finish(QCoro::Task<T>&& task, int ms = 5000) {
    auto done = std::make_shared<bool>(false);
    [](QCoro::Task<T> t, std::shared_ptr<bool> flag) -> QCoro::Task<void> {
        try {
            co_await std::move(t);
        } catch (...) {
        }
        *flag = true;
    }(std::move(task), done);
    return QTest::qWaitFor([done] { return *done; }, ms);
}

// The wait for a request slot, without waiting: the clock jumps to the slot.
inline QCoro::Task<void> jumpTo(ManualClock* clock, double until) {
    if (until > clock->wallNow())
        clock->advance(until - clock->wallNow());
    co_await QCoro::sleepFor(0ms);
}

inline QCoro::Task<void> noPause(double) {
    co_await QCoro::sleepFor(0ms);
}

struct World {
    QTemporaryDir dir;
    Preferences prefs{dir.filePath(QStringLiteral("prefs.conf"))};
    ManualClock clock;
    FakeSpotifyServer server;
    std::unique_ptr<SpotifyLibrary> library;

    World() {
        writePrivateFile(SpotifyLibrary::signInFilePath(),
                         QJsonDocument(QJsonObject{{kClient, "refresh-0"}}).toJson());
        library = std::make_unique<SpotifyLibrary>(prefs, clock, kClient, true);
        library->setEndpoints({server.apiBase(), server.authorizeURL(), server.tokenURL()});
        library->setSleeper([c = &clock](double until) { return jumpTo(c, until); });
        library->setLogSink([](const QString&) {});
        server.routeFixture(QStringLiteral("GET /v1/me"), QStringLiteral("me.json"));
    }

    QString memoryFile() const {
        return dir.filePath(QStringLiteral("cache/spotify-library.json"));
    }

    std::unique_ptr<SpotifyMemory> memory() {
        auto made =
            std::make_unique<SpotifyMemory>(memoryFile(), SpotifyMemory::ownerFrom(*library),
                                            SpotifyMemory::pagesFrom(*library), clock);
        made->setSleeper(noPause);
        made->waitUntilRead();
        return made;
    }

    // A fixture whose `next` links lead to this server.
    QByteArray here(const QString& fixture) const {
        QByteArray json = FakeSpotifyServer::fixture(fixture);
        return json.replace("https://api.spotify.com/v1/", server.apiBase().toString().toUtf8());
    }
    void route(const QString& methodAndPath, const QString& fixture, int status = 200) {
        server.routeJSON(methodAndPath, here(fixture), status);
    }

    int requestsTo(const QString& path) const {
        int count = 0;
        for (const auto& request : server.apiRequests())
            count += request.path == path;
        return count;
    }

    // Items of a fixture page, as the Web API gives them.
    QList<SpotifyItem> itemsOf(const QString& fixture, const QString& wrapper = {}) const {
        QJsonObject object = QJsonDocument::fromJson(here(fixture)).object();
        if (!wrapper.isEmpty())
            object = object.value(wrapper).toObject();
        return pageFromJSON(object).items;
    }
};

} // namespace LibraryTest
