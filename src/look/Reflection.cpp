#include "look/Reflection.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace MirlPlayer {

namespace {

// Below this magnitude a pool makes no light.
constexpr double threshold = 0.04;

// Calls `light(i, p, m)` for each pool bright enough to make light, p being its place along the
// spectrum; nothing when the layer is off or has no room.
template <typename Light>
void eachLitPool(const std::vector<double>& mags, double w, double h, const ReflectionSettings& s,
                 Light light) {
    const auto pools = int(mags.size());
    if (s.amount <= 0.001 || w <= 0 || h <= 0 || pools < 2)
        return;
    for (int i = 0; i < pools; ++i) {
        const double m = mags[size_t(i)];
        if (m > threshold)
            light(i, double(i) / (pools - 1), m);
    }
}

} // namespace

HSB lightColour(const HSB& ramp, double m, double strength, const LightTuning& tuning) {
    const double peak = std::max((m - 0.6) / 0.4, 0.0);
    const double whiten = tuning.peakWhite * peak * -0.75 + 0.95;
    const double sat = ramp.s * std::min(strength * std::max(whiten, 0.2), 1.0);
    const double bri =
        ramp.b *
        std::min(tuning.floorBright + (tuning.peakBright - tuning.floorBright) * m + peak * 0.1,
                 1.0);
    return {ramp.h, sat, bri};
}

std::vector<double> blobStops(double a) {
    std::vector<double> stops(13);
    for (int k = 0; k <= 12; ++k) {
        const double x = k / 12.0;
        stops[size_t(k)] = std::pow(1 - x * x, 2) * a;
    }
    return stops;
}

ReflectionSettings reflectionSettings(ReflectionKind kind, bool libraryOpen,
                                      const std::function<double(const QString&)>& value) {
    const QString p =
        kind == ReflectionKind::glass ? QStringLiteral("reflect") : QStringLiteral("edge");
    const QString lib = libraryOpen ? QStringLiteral("Library") : QString();
    ReflectionSettings s;
    s.amount = value(p + lib + QStringLiteral("Amount"));
    s.attack = value(p + QStringLiteral("Attack"));
    s.release = value(p + QStringLiteral("Release"));
    s.colour = value(p + QStringLiteral("Color"));
    const double spread = kind == ReflectionKind::glass ? 1.6 : 2.2;
    s.diffusion = (value(p + lib + QStringLiteral("Diffuse")) + 0.5) * (libraryOpen ? spread : 1);
    s.blur = libraryOpen ? 18 : 0;
    return s;
}

ReflectionFrame glassReflection(const std::vector<double>& mags, double w, double h,
                                const ReflectionSettings& s, const LightColourAt& colourAt) {
    ReflectionFrame frame;
    const double d = s.diffusion;
    const auto pools = double(mags.size());
    eachLitPool(mags, w, h, s, [&](int i, double p, double m) {
        // The lowest bass stays out of the glass.
        const double q = std::clamp((p - 0.08) / 0.3, 0.0, 1.0);
        const double fade = q * q * (3 - 2 * q);
        if (fade <= 0.01)
            return;
        frame.blobs.push_back({{(i + 0.5) / pools * w, h},
                               d * (m * 0.46 + 0.32) * h,
                               std::min(s.amount * fade * std::pow(m, 1.7) * 0.15 / d, 0.9),
                               colourAt(p, m)});
    });
    // Every pool counts in the mean, lit or not.
    const double mean = std::accumulate(mags.begin(), mags.end(), 0.0) / std::max(pools, 1.0);
    if (s.amount > 0.001 && w > 0 && h > 0 && mags.size() >= 2 && mean > threshold)
        frame.wash = LightBlob{{0, 0},
                               0.34 * h, // the wash's height
                               std::min(s.amount * mean * 0.14, 0.3),
                               colourAt(0.5, std::min(mean * 1.4, 1.0))};
    return frame;
}

ReflectionFrame edgeReflection(const std::vector<double>& mags, double w, double h,
                               const ReflectionSettings& s, const LightColourAt& colourAt) {
    ReflectionFrame frame;
    const double d = s.diffusion;
    eachLitPool(mags, w, h, s, [&](int, double p, double m) {
        // Half the perimeter, from the middle of the bottom edge round the right to the top.
        const double along = p * (w + h);
        QPointF at;
        if (along < w / 2)
            at = {w / 2 + along, h};
        else if (along < w / 2 + h)
            at = {w, h - (along - w / 2)};
        else
            at = {w - (along - w / 2 - h), 0};
        LightBlob blob{at, d * (m * 0.2 + 0.11) * std::min(w, h),
                       std::min(s.amount * std::pow(m, 1.7) * 0.17 / d, 0.9), colourAt(p, m)};
        frame.blobs.push_back(blob);
        blob.centre = {w - at.x(), at.y()};
        frame.blobs.push_back(blob);
    });
    return frame;
}

} // namespace MirlPlayer
