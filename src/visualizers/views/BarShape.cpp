#include "visualizers/views/BarShape.h"

#include <algorithm>

namespace MirlPlayer {

BarShape BarShape::standing(int n, double w, double h, double widthShare, double round) {
    BarShape s;
    s.slot = n > 0 ? w / n : 0;
    s.width = std::max(s.slot * widthShare, 1.0);
    s.radius = std::min(round, s.width * 0.5);
    s.canvasHeight = h;
    s.scale = h;
    return s;
}

BarShape BarShape::mirroredAbout(int n, double w, double h, double widthShare, double heightShare) {
    BarShape s = standing(n, w, h, widthShare, 1.5);
    s.mirrored = true;
    s.scale = heightShare * h;
    return s;
}

QRectF BarShape::rect(int i, double level) const {
    const double x = (slot - width) * 0.5 + slot * i;
    const double h = std::max(level * scale, 1.0);
    if (mirrored)
        return {x, canvasHeight * 0.5 - h, width, 2 * h};
    return {x, canvasHeight - h, width, h};
}

} // namespace MirlPlayer
