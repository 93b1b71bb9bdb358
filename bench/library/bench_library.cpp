// How fast the library opens from its memory after a restart, and how fast the filter answers,
// with 10,000 saved songs. The file is generated with fields like real answers. The baseline,
// measured in the same run, is parsing the same file with QJsonDocument alone: the ratio says
// what the records, the checks and the first list cost on top of reading JSON at all.
// The resident memory added is measured in a fresh child process for each side.

#include "core/Clock.h"
#include "core/Preferences.h"
#include "core/PrivateFile.h"
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"
#include "spotify/SpotifyLibrary.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

using namespace MirlPlayer;

namespace {

constexpr int kSongs = 10'000;
constexpr int kRuns = 9;
const QString kOwner = QStringLiteral("spotify:user:bench:collection");

QString spotifyID(QRandomGenerator& rng) {
    static const char alphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    QString id;
    for (int i = 0; i < 22; ++i)
        id.append(QChar(alphabet[rng.bounded(62)]));
    return id;
}

QByteArray generateFile() {
    QRandomGenerator rng(16);
    const QStringList words{"Night", "Café",  "Lumière", "Harbour", "Straße",  "Drive", "Beyoncé",
                            "Gold",  "Fjord", "Echo",    "Señor",   "River",   "Blue",  "Déjà",
                            "Vu",    "Paper", "Moon",    "Tide",    "Ålesund", "Glass"};
    std::vector<std::pair<QString, QString>> artists;
    for (int i = 0; i < 900; ++i)
        artists.emplace_back(spotifyID(rng),
                             words[rng.bounded(20)] + u' ' + words[rng.bounded(20)]);
    MemorySnapshot s;
    s.owner = kOwner;
    s.savedNext.reset();
    s.complete = true;
    for (int i = 0; i < kSongs; ++i) {
        SpotifyItem item;
        item.uri = item.id = QStringLiteral("spotify:track:") + spotifyID(rng);
        const int length = 1 + int(rng.bounded(4));
        for (int w = 0; w < length; ++w)
            item.name += (w ? QStringLiteral(" ") : QString()) + words[rng.bounded(20)];
        const int count = 1 + int(rng.bounded(100) < 20 ? 1 + rng.bounded(2) : 0);
        for (int a = 0; a < count; ++a) {
            const auto& artist = artists[rng.bounded(int(artists.size()))];
            item.artistIDs.append(artist.first);
            item.artistNames.append(artist.second);
        }
        item.subtitle = item.artistNames.join(QStringLiteral(", "));
        item.kind = QStringLiteral("track");
        const QString cover = QStringLiteral("https://i.scdn.co/image/ab67616d") + spotifyID(rng);
        item.image = QUrl(cover + QStringLiteral("4851"));
        item.largeImage = QUrl(cover + QStringLiteral("b273"));
        item.durationMs = 120'000 + rng.bounded(240'000);
        item.explicit_ = rng.bounded(10) == 0;
        item.albumURI = QStringLiteral("spotify:album:") + spotifyID(rng);
        item.albumName = words[rng.bounded(20)] + QStringLiteral(" Sessions");
        s.saved.append(item);
    }
    s.pages.insert(
        QStringLiteral("me/tracks?limit=30"),
        {s.saved.mid(0, 30), QStringLiteral("me/tracks?offset=30&limit=30"), kSongs, 1.7e9});
    return encodeMemory(s);
}

QCoro::Task<std::optional<QString>> owner() {
    co_return kOwner;
}

QCoro::Task<SpotifyPage> noPage(QString) {
    co_return SpotifyPage();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double timeMs(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

double residentMiB() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.value(1).toDouble() * 4096.0 / (1024.0 * 1024.0);
}

// One side in a fresh process: prints the resident memory it added.
int childRSS(const QString& side, const QString& file) {
    SpotifyLibrary library(Preferences::shared(), Clock::system(), QString(), false);
    const double before = residentMiB();
    QJsonDocument document;
    std::unique_ptr<SpotifyMemory> memory;
    std::unique_ptr<SpotifyBrowser> browser;
    if (side == u"json") {
        document = QJsonDocument::fromJson(*readFile(file, 1LL << 30));
    } else {
        memory = std::make_unique<SpotifyMemory>(file, owner, noPage, Clock::system());
        memory->waitUntilRead();
        memory->prepareMemory();
        browser = std::make_unique<SpotifyBrowser>(library, *memory, Preferences::shared(),
                                                   Clock::system());
        browser->selectTab(QStringLiteral("Liked Songs"));
        browser->setFilter(QStringLiteral("n"));
    }
    std::printf("%.2f\n", residentMiB() - before);
    return 0;
}

double rssOf(const QString& side, const QString& file) {
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--rss"), side, file});
    child.waitForFinished(60'000);
    return child.readAllStandardOutput().trimmed().toDouble();
}

} // namespace

int main(int argc, char** argv) {
    QTemporaryDir home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
        if (!qEnvironmentVariableIsSet("MIRL_BENCH_CHILD"))
            qputenv(name, home.path().toUtf8());
    qputenv("MIRL_BENCH_CHILD", "1");
    QCoreApplication app(argc, argv);
    if (argc == 4 && QByteArray(argv[1]) == "--rss")
        return childRSS(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));

    const QString file = home.filePath(QStringLiteral("spotify-library.json"));
    const QByteArray bytes = generateFile();
    writePrivateFile(file, bytes);
    SpotifyLibrary library(Preferences::shared(), Clock::system(), QString(), false);

    std::vector<double> parse, load, gui, firstKey, key;
    for (int run = 0; run < kRuns; ++run) {
        parse.push_back(timeMs([&] {
            const QJsonDocument document = QJsonDocument::fromJson(*readFile(file, 1LL << 30));
            if (!document.isObject())
                std::abort();
        }));
        std::unique_ptr<SpotifyMemory> memory;
        std::unique_ptr<SpotifyBrowser> browser;
        double blocked = 0;
        load.push_back(timeMs([&] {
            blocked = timeMs([&] {
                memory = std::make_unique<SpotifyMemory>(file, owner, noPage, Clock::system());
            });
            // The file is read on the memory's own thread; the GUI thread takes the result.
            while (!memory->isRead())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            blocked += timeMs([&] {
                memory->prepareMemory(); // read and the owner at hand: no suspension
                browser = std::make_unique<SpotifyBrowser>(library, *memory, Preferences::shared(),
                                                           Clock::system());
                browser->selectTab(QStringLiteral("Liked Songs"));
            });
        }));
        gui.push_back(blocked);
        if (browser->list()->count() != 30 || !memory->verified())
            std::abort();
        // The first letter brings the whole memory into the list and folds its names.
        firstKey.push_back(timeMs([&] { browser->setFilter(QStringLiteral("n")); }));
        key.push_back(timeMs([&] { browser->setFilter(QStringLiteral("ni")); }));
        if (browser->list()->count() == 0 || browser->items().size() != kSongs)
            std::abort();
    }

    const double rssLoad = rssOf(QStringLiteral("memory"), file);
    const double rssJSON = rssOf(QStringLiteral("json"), file);
    const double parseMs = median(parse), loadMs = median(load);
    std::printf("library memory of %d saved songs, %.1f MiB file, median of %d runs\n", kSongs,
                double(bytes.size()) / (1024.0 * 1024.0), kRuns);
    std::printf("  baseline (QJsonDocument parse)   %8.2f ms\n", parseMs);
    std::printf("  load + first list published       %8.2f ms  (ratio %.2f, aim < 150 ms)\n",
                loadMs, loadMs / parseMs);
    std::printf("  of which on the GUI thread          %8.2f ms\n", median(gui));
    std::printf("  first filter keystroke            %8.2f ms\n", median(firstKey));
    std::printf("  next filter keystroke             %8.2f ms  (aim < 5 ms)\n", median(key));
    std::printf("  resident memory added             %8.2f MiB (baseline %.2f MiB)\n", rssLoad,
                rssJSON);
    std::printf(
        "{\"bench\":\"library\",\"songs\":%d,\"file_bytes\":%lld,\"baseline_parse_ms\":%.2f,"
        "\"load_ms\":%.2f,\"ratio\":%.2f,\"gui_ms\":%.2f,\"first_keystroke_ms\":%.2f,\"keystroke_"
        "ms\":%.2f,"
        "\"rss_added_mib\":%.2f,\"rss_baseline_mib\":%.2f}\n",
        kSongs, qint64(bytes.size()), parseMs, loadMs, loadMs / parseMs, median(gui),
        median(firstKey), median(key), rssLoad, rssJSON);
    return 0;
}
