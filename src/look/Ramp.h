#pragma once

#include "look/HSB.h"

#include <QList>

namespace MirlPlayer {

// Stretches a palette into n colours from the lows (index 0) to the highs (index n - 1). Stops
// are joined in OKLCH with a smoothstep inside each segment; hue turns the short way, and a stop
// with almost no chroma borrows its neighbour's hue so a grey stop does not drag a hue sweep
// across the wheel.
Palette makeRamp(const Palette& palette, int n);

// The glide's easing.
inline double smoothstep(double p) {
    return p * p * (3.0 - 2.0 * p);
}

} // namespace MirlPlayer
