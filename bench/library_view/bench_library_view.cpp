// The library view flung through 10,000 liked songs on a virtual screen: the time of a frame, the
// rows the list builds, and the memory the open library adds. The baseline, measured in the same
// run and window, is a bare list of the same rows drawing only their titles: the ratio says what
// the library's rows (covers, hearts, fading, the remembered place) cost on top of a list at all.
// The account is the sample library of scripts/demo-spotify-server, on 127.0.0.1.

#include "core/Clock.h"
#include "core/Preferences.h"
#include "core/PrivateFile.h"
#include "library/LibraryModule.h"
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"
#include "library/SpotifyMemoryData.h"
#include "spotify/SpotifyLibrary.h"
#include "spotify/SpotifyTokenStore.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <vector>

using namespace MirlPlayer;

namespace {

constexpr int kSongs = 10'000;
constexpr int kFrames = 240;
constexpr double kStep = 90; // points a frame: a brisk fling at 60 frames a second
const QString kClient = QStringLiteral("0123456789abcdef0123456789abcdef");

double residentMiB() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return statm.readAll().split(' ').value(1).toDouble() * 4096.0 / (1024.0 * 1024.0);
}

// The memory of an account whose Liked Songs were scrolled to the end once: every song in the
// list's cached page, fresh, so that opening asks the network for nothing.
void writeMemory() {
    MemorySnapshot s;
    s.owner = QStringLiteral("spotify:user:demo:collection");
    s.savedNext.reset();
    s.complete = true;
    for (int i = 0; i < kSongs; ++i) {
        SpotifyItem item;
        item.id = QStringLiteral("T%1").arg(i, 21, 10, QChar(u'0'));
        item.uri = QStringLiteral("spotify:track:") + item.id;
        item.name = QStringLiteral("Song number %1 of a long evening").arg(i);
        item.subtitle = QStringLiteral("Artist %1").arg(i % 300);
        item.artistNames = {item.subtitle};
        item.artistIDs = {QStringLiteral("R%1").arg(i % 300, 21, 10, QChar(u'0'))};
        item.kind = QStringLiteral("track");
        item.durationMs = 200'000;
        s.saved.append(item);
    }
    s.pages.insert(QStringLiteral("me/tracks?limit=30"),
                   {s.saved, std::nullopt, kSongs, double(QDateTime::currentSecsSinceEpoch())});
    s.navigation =
        MemoryNavigation{QStringLiteral("Liked Songs"), {}, QStringLiteral("track"), {}, {}};
    writePrivateFile(SpotifyMemory::defaultFilePath(), encodeMemory(s));
}

// Flings `list` from top to bottom, one step a frame, rendering each frame; the median frame.
double flingMs(QQuickView& view, QQuickItem* list) {
    std::vector<double> frames;
    QElapsedTimer timer;
    list->setProperty("contentY", 0);
    const double end = list->property("contentHeight").toDouble() - list->height();
    for (int frame = 0; frame < kFrames; ++frame) {
        const double y = std::fmod(frame * kStep, std::max(end, 1.0));
        timer.start();
        list->setProperty("contentY", y);
        view.grabWindow(); // lays out, builds rows and renders one frame
        frames.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(frames.begin(), frames.end());
    return frames[frames.size() / 2];
}

// Every item in the list's content: the rows on screen, those kept in its cache buffer, and the
// header.
int rowsBuilt(QQuickItem* list) {
    return int(qvariant_cast<QQuickItem*>(list->property("contentItem"))->childItems().size());
}

const char* kBareList = R"(
import QtQuick
import MirlPlayer.Library
ListView {
    objectName: "libraryList"
    width: 463; height: 330
    model: SpotifyBrowser.list
    delegate: Text { required property string name; width: 463; height: 40; text: name; color: "white" }
})";

} // namespace

int main(int argc, char** argv) {
    QTemporaryDir home;
    for (const auto& [name, sub] : {std::pair{"XDG_CONFIG_HOME", "/config"},
                                    {"XDG_CACHE_HOME", "/cache"},
                                    {"XDG_DATA_HOME", "/data"},
                                    {"XDG_STATE_HOME", "/state"}})
        qputenv(name, (home.path() + QLatin1String(sub)).toUtf8());
    // A virtual screen of our own unless one is given.
    QProcess xvfb;
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        xvfb.start(QStringLiteral("Xvfb"), {QStringLiteral(":93"), QStringLiteral("-screen"),
                                            QStringLiteral("0"), QStringLiteral("1280x800x24"),
                                            QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        QThread::msleep(1500);
        qputenv("DISPLAY", ":93");
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    QProcess server;
    server.start(QStringLiteral(MIRL_DEMO_SERVER),
                 {QStringLiteral("--liked"), QStringLiteral("10")});
    if (!server.waitForReadyRead(10'000)) {
        std::fprintf(stderr, "bench: the sample library did not start\n");
        return 1;
    }
    const QByteArray port = server.readLine().trimmed();
    qputenv("MIRL_SPOTIFY_SERVICE", "http://127.0.0.1:" + port);

    QGuiApplication app(argc, argv);
    Preferences::shared().setValue(QStringLiteral("spotifyClientID"), kClient);
    SpotifyTokenStore::store(kClient, QStringLiteral("demo-refresh"));
    writeMemory();

    QQuickView view;
    useLibraryModule(*view.engine());
    view.resize(640, 376);
    view.setColor(QColor(24, 24, 26));
    view.show();
    QTest::qWaitForWindowExposed(&view);

    // Baseline: the bare list over the same rows.
    SpotifyBrowser& browser = SpotifyBrowser::shared();
    browser.appear();
    QTest::qWaitFor([&] { return browser.list()->count() == kSongs; }, 20'000);
    if (browser.list()->count() != kSongs) {
        std::fprintf(stderr, "bench: Liked Songs holds %d rows\n", browser.list()->count());
        return 1;
    }
    QQmlComponent bare(view.engine());
    bare.setData(kBareList, QUrl());
    auto* bareList = qobject_cast<QQuickItem*>(bare.create());
    bareList->setParentItem(view.contentItem());
    const double baseMs = flingMs(view, bareList);
    delete bareList;
    QTest::qWait(50);

    const double before = residentMiB();
    view.setSource(libraryViewSource());
    auto* list = view.rootObject()->findChild<QQuickItem*>(QStringLiteral("libraryList"));
    QTest::qWaitFor([&] { return list && list->isVisible() && list->height() > 0; }, 5000);
    if (!list || !view.rootObject()) {
        std::fprintf(stderr, "bench: the library view did not load\n");
        return 1;
    }
    view.grabWindow();
    const double opened = residentMiB() - before;
    const double libraryMs = flingMs(view, list);
    const int built = rowsBuilt(list);
    const double afterFling = residentMiB() - before;

    std::printf("library view, %d liked songs, %d frames flung at %.0f points a frame "
                "(median frame; machine: %d cores, shared)\n",
                kSongs, kFrames, kStep, QThread::idealThreadCount());
    std::printf("  baseline (bare list of titles)   %7.2f ms a frame\n", baseMs);
    std::printf("  library view                     %7.2f ms a frame  (ratio %.2f)\n", libraryMs,
                libraryMs / baseMs);
    std::printf("  rows built                       %7d\n", built);
    std::printf("  memory added by opening          %7.2f MiB (after the fling %.2f MiB)\n", opened,
                afterFling);
    std::printf("{\"bench\":\"library_view\",\"songs\":%d,\"baseline_frame_ms\":%.2f,"
                "\"frame_ms\":%.2f,\"ratio\":%.2f,\"rows_built\":%d,\"rss_open_mib\":%.2f,"
                "\"rss_after_fling_mib\":%.2f}\n",
                kSongs, baseMs, libraryMs, libraryMs / baseMs, built, opened, afterFling);
    view.setSource({});
    QTest::qWait(300); // requests in flight land before the models go
    server.terminate();
    server.waitForFinished();
    if (xvfb.state() != QProcess::NotRunning) {
        xvfb.terminate();
        xvfb.waitForFinished();
    }
    return 0;
}
