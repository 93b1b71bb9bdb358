// The cost of one panel tick: with the window list cached (most ticks), and with a fresh read of
// 40 windows (about seven ticks a second). The fresh read is timed over the heuristics alone
// (windows from memory) and, on a private X server, over the real X11 read.
#include "PanelFakes.h"
#include "X11TestSession.h"
#include "panel/logic/NotchPanelController.h"
#include "platform/linux/x11/X11WindowFacts.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QRasterWindow>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

using namespace MirlPlayer;
using namespace MirlPlayer::Test;

namespace {

WindowList fortyWindows() {
    WindowList list;
    for (int i = 0; i < 34; ++i)
        list << window(QStringLiteral("app%1").arg(i % 7), 0, QRectF(40 * i, 30 + 10 * i, 800, 600),
                       1000 + i % 7);
    list << window("panel", 25, QRectF(0, 0, 1512, 24), 900);
    list << window("dock", 20, QRectF(300, 930, 900, 52), 901);
    list << window("notifications", 23, QRectF(1100, 30, 400, 120), 902);
    list << window("menu", 101, QRectF(100, 24, 200, 300), 903);
    list << window("tooltip", 101, QRectF(400, 600, 80, 20), 904);
    list << window("Dock", 18, QRectF(0, 0, 10, 10), 905);
    return list;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

// Median nanoseconds of `fn` over `n` runs.
template <typename F> double timeEach(int n, F fn) {
    std::vector<double> samples;
    samples.reserve(n);
    QElapsedTimer t;
    for (int i = 0; i < n; ++i) {
        t.start();
        fn();
        samples.push_back(double(t.nsecsElapsed()));
    }
    return median(samples);
}

} // namespace

int main(int argc, char** argv) {
    X11TestSession session;
    if (!session.ok())
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    ManualClock clock;
    FakeScreens screens;
    FakePointer pointer;
    FakeWindows windows;
    windows.list = fortyWindows();
    FakePanel panel;
    NotchPanelController::Outputs out;
    out.broadcast = [](const MirlState&) {};
    NotchPanelController controller(clock, screens, pointer, windows, {}, out);
    controller.setForceExpanded(false);
    controller.start(&panel);
    controller.stop(); // driven by hand below

    controller.tick();
    const double cached = timeEach(20000, [&] {
        clock.advance(1e-6); // inside every cache's lifetime
        controller.tick();
    });
    const double fresh = timeEach(5000, [&] {
        clock.advance(0.25); // every cache stale: list, full-screen and blocker tests
        controller.tick();
    });

    double x11Read = -1;
    double x11Tick = -1;
    int x11Count = 0;
    if (session.ok()) {
        // 40 windows of another kind of client: ordinary top-level windows of this process.
        std::vector<std::unique_ptr<QRasterWindow>> shown;
        for (int i = 0; i < 40; ++i) {
            auto w = std::make_unique<QRasterWindow>();
            w->setGeometry(20 * i, 20 * i, 300, 200);
            w->show();
            shown.push_back(std::move(w));
        }
        QElapsedTimer wait;
        wait.start();
        X11WindowFacts facts;
        while (wait.elapsed() < 3000) {
            app.processEvents();
            const auto list = facts.onScreenWindows();
            if (list && list->size() >= 40)
                break;
        }
        x11Count = int(facts.onScreenWindows().value_or(WindowList{}).size());
        x11Read = timeEach(300, [&] { facts.onScreenWindows(); });
        NotchPanelController real(clock, screens, pointer, facts, {}, out);
        real.setForceExpanded(false);
        real.start(&panel);
        real.stop();
        x11Tick = timeEach(300, [&] {
            clock.advance(0.25);
            real.tick();
        });
    }

    std::printf("tick, cached window list:        %10.0f ns\n", cached);
    std::printf("tick, fresh read of 40 (memory):  %10.0f ns  (x%.1f the cached tick)\n", fresh,
                fresh / cached);
    if (x11Read >= 0) {
        std::printf("X11 read of %d windows:           %10.0f ns\n", x11Count, x11Read);
        std::printf("tick, fresh read of 40 (X11):     %10.0f ns  (x%.1f the cached tick, %.2f %% "
                    "of the 50 ms tick)\n",
                    x11Tick, x11Tick / cached, 100 * x11Tick / 50e6);
    }
    std::printf("{\"bench\":\"panel_tick\",\"ns_cached\":%.0f,\"ns_fresh_40\":%.0f,"
                "\"ns_fresh_40_x11\":%.0f,\"x11_windows\":%d,\"ratio_fresh_to_cached\":%.2f,"
                "\"ratio_x11_to_cached\":%.2f}\n",
                cached, fresh, x11Tick, x11Count, fresh / cached,
                x11Tick > 0 ? x11Tick / cached : 0);
    return 0;
}
