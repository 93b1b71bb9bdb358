// Cost of applying samples to the now-playing model: a steady sample (what the poll delivers
// almost always) must cost next to nothing, since it publishes nothing; a changing one publishes
// every field. Baseline: building the track key alone, measured in the same run.
#include "fakes/FakePlayerBridge.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <algorithm>
#include <cstdio>
#include <vector>

using namespace MirlPlayer;

namespace {

constexpr int samples = 100000;
constexpr int rounds = 5;

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

template <typename F> double nsPerCall(F&& body) {
    std::vector<double> perRound;
    for (int r = 0; r < rounds; ++r) {
        QElapsedTimer t;
        t.start();
        for (int i = 0; i < samples; ++i)
            body(i);
        perRound.push_back(double(t.nsecsElapsed()) / samples);
    }
    return median(perRound);
}

} // namespace

int main(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ManualClock clock;
    FakePlayerBridge bridge;
    PlayerState state(&bridge, clock);
    state.start();
    MusicController& controller = *state.controller();
    const Snapshot music = Snapshot::empty(Source::music);

    const Snapshot steady = track(Source::spotify, "Steady", true, 1000, 200000,
                                  QStringLiteral("spotify:track:steady"));
    controller.merge(steady, music, clock.now());
    const double steadyNs = nsPerCall([&](int) { controller.merge(steady, music, clock.now()); });

    std::vector<Snapshot> changing;
    changing.reserve(64);
    for (int i = 0; i < 64; ++i)
        changing.push_back(track(Source::spotify, QStringLiteral("Track %1").arg(i), i % 2,
                                 i * 1000.0, 200000 + i,
                                 QStringLiteral("spotify:track:%1").arg(i)));
    const double changingNs = nsPerCall([&](int i) {
        clock.advance(0.001);
        controller.merge(changing[i % 64], music, clock.now());
    });

    volatile qsizetype sink = 0;
    const double keyNs = nsPerCall([&](int i) {
        const Snapshot& s = changing[i % 64];
        const QString key =
            sourceRawValue(s.source) + u'|' + s.title + u'|' + s.artist + u'|' + s.album;
        sink = sink + key.size();
    });

    std::printf("steady sample:   %.0f ns (median of %d rounds of %d)\n", steadyNs, rounds,
                samples);
    std::printf("changing sample: %.0f ns\n", changingNs);
    std::printf("track key alone: %.0f ns (baseline)\n", keyNs);
    std::printf("{\"bench\":\"apply\",\"steady_ns\":%.0f,\"changing_ns\":%.0f,\"key_ns\":%.0f,"
                "\"steady_ratio_to_key\":%.2f,\"changing_ratio_to_key\":%.2f}\n",
                steadyNs, changingNs, keyNs, steadyNs / keyNs, changingNs / keyNs);
    return 0;
}
