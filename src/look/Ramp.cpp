#include "look/Ramp.h"

#include "look/OKLab.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

Palette makeRamp(const Palette& palette, int n) {
    if (n <= 0 || palette.isEmpty())
        return {};
    if (palette.size() == 1 || n == 1)
        return Palette(n, palette.first());

    QList<OKLCH> stops;
    stops.reserve(palette.size());
    for (const HSB& c : palette)
        stops.append(toOklch(hsbToOklab(c)));

    const int segments = int(stops.size()) - 1;
    Palette ramp;
    ramp.reserve(n);
    for (int i = 0; i < n; ++i) {
        const double x = double(i) / double(n - 1) * segments;
        const int segment = std::min(segments - 1, int(x));
        const double f = x - segment;
        const double e = smoothstep(f);
        const OKLCH& a = stops[segment];
        const OKLCH& b = stops[segment + 1];
        double h1 = a.h;
        double h2 = b.h;
        if (a.C < 0.02)
            h1 = h2;
        if (b.C < 0.02)
            h2 = h1;
        double dh = h2 - h1;
        dh -= std::round(dh / 360.0) * 360.0;
        const OKLCH mixed{a.L + (b.L - a.L) * e, a.C + (b.C - a.C) * e, h1 + e * dh};
        ramp.append(oklchToHsb(mixed));
    }
    return ramp;
}

} // namespace MirlPlayer
