// What each visualizer style costs the whole process: CPU seconds per second with the card's
// visualizer on screen (a private Xvfb, OpenGL through Mesa's llvmpipe) and a fixed feed of 30
// level publications a second (with a stereo curve each), as a ratio to the `bars` style of the
// same run; and the same with the feed stopped, when nothing may redraw.
#include "X11TestSession.h"
#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "visualizers/views/VisualizerTypes.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sys/resource.h>

using namespace MirlPlayer;

namespace {

double cpuSeconds() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) * 1e-6;
}

// Runs the event loop for `seconds` and returns the process's CPU seconds per second meanwhile.
double cpuPerSecond(double seconds) {
    const double start = cpuSeconds();
    QElapsedTimer wall;
    wall.start();
    QEventLoop loop;
    QTimer::singleShot(int(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
    return (cpuSeconds() - start) / (double(wall.elapsed()) / 1000.0);
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// A fixed feed: 30 different level arrays and curves, played in a loop, like music that moves.
struct Feed {
    std::vector<QList<double>> levels;
    std::vector<StereoStore::Curve> curves;
    int next = 0;
    Feed() {
        for (int f = 0; f < 30; ++f) {
            QList<double> bands(LevelsStore::bandCount);
            for (int i = 0; i < bands.size(); ++i)
                bands[i] = 0.5 + 0.45 * std::sin(i * 0.11 + f * 0.7) * std::exp(-i / 90.0);
            levels.push_back(bands);
            StereoStore::Curve curve{};
            for (int c = 0; c < StereoStore::columns; ++c)
                curve[c] = float(0.35 + 0.3 * std::sin(c * 0.13 - f * 0.5));
            curves.push_back(curve);
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    Test::X11TestSession session;
    if (!session.ok()) {
        std::fprintf(stderr, "no private X server: %s\n", qPrintable(session.error()));
        return 1;
    }
    requestVisualizerGraphics();
    QGuiApplication app(argc, argv);
    registerVisualizerTypes();
    QTemporaryDir dir;
    ManualClock clock;
    Preferences prefs(dir.filePath("prefs.conf"));
    Theme theme(prefs, clock);
    LevelsStore levels;
    StereoStore stereo;
    Feed feed;

    // The open card with the visualizer layout, its visualizer where the card places it.
    QQuickView view;
    view.setColor(Qt::transparent);
    QQmlComponent component(view.engine());
    component.setData(R"(
        import QtQuick
        import MirlPlayer.Visualizers
        Rectangle {
            property alias vizID: spectrum.vizID
            property alias levelsStore: spectrum.levelsStore
            property alias stereoStore: spectrum.stereoStore
            property alias theme: spectrum.theme
            width: 580; height: 168; radius: 30; color: "#0c0c10"
            SpectrumView { id: spectrum; x: 400; y: 24; width: 162; height: 120 }
        })",
                      QUrl());
    auto* root = qobject_cast<QQuickItem*>(
        component.createWithInitialProperties({{"levelsStore", QVariant::fromValue(&levels)},
                                               {"stereoStore", QVariant::fromValue(&stereo)},
                                               {"theme", QVariant::fromValue(&theme)}}));
    if (!root) {
        std::fprintf(stderr, "%s\n", qPrintable(component.errorString()));
        return 1;
    }
    root->setParentItem(view.contentItem());
    view.resize(580, 168);
    view.show();

    QTimer publisher;
    publisher.setInterval(1000 / 30);
    QObject::connect(&publisher, &QTimer::timeout, [&] {
        stereo.update(feed.curves[feed.next]);
        levels.setLevels(feed.levels[feed.next]);
        feed.next = (feed.next + 1) % int(feed.levels.size());
    });

    // Styles to measure may be named on the command line (to profile one); `bars` comes first.
    QStringList styles{"bars",     "mirror",    "skyline", "circuitry",     "silk",
                       "phosphor", "waterfall", "stereo",  "stereoAnalyzer"};
    if (argc > 1) {
        styles = {"bars"};
        for (int i = 1; i < argc; ++i)
            styles << QString::fromLocal8Bit(argv[i]);
    }
    struct Row {
        QString style;
        double fed, idle;
    };
    std::vector<Row> rows;
    for (const QString& style : styles) {
        root->setProperty("vizID", style);
        publisher.start();
        cpuPerSecond(1.0); // the history fills, the first frames are made
        std::vector<double> fed;
        for (int i = 0; i < 3; ++i)
            fed.push_back(cpuPerSecond(2.0));
        publisher.stop();
        cpuPerSecond(0.5); // the last frame goes out
        std::vector<double> idle;
        for (int i = 0; i < 3; ++i)
            idle.push_back(cpuPerSecond(1.0));
        rows.push_back({style, median(fed), median(idle)});
    }

    const double bars = rows.front().fed;
    std::printf("CPU seconds per second of the whole process, card open, Xvfb + llvmpipe\n");
    std::printf("%-16s %12s %12s %14s\n", "style", "fed 30/s", "ratio bars", "feed stopped");
    QString json = QStringLiteral("{\"bench\":\"visualizers\"");
    for (const Row& r : rows) {
        std::printf("%-16s %12.4f %12.2f %14.4f\n", qPrintable(r.style), r.fed, r.fed / bars,
                    r.idle);
        json += QStringLiteral(",\"%1_cpu\":%2,\"%1_ratio_to_bars\":%3,\"%1_idle_cpu\":%4")
                    .arg(r.style)
                    .arg(r.fed, 0, 'f', 4)
                    .arg(r.fed / bars, 0, 'f', 2)
                    .arg(r.idle, 0, 'f', 4);
    }
    std::printf("%s}\n", qPrintable(json));
    return 0;
}
