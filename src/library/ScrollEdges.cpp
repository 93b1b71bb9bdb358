#include "library/ScrollEdges.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

double scrollWheelDelta(double pixelDeltaY, double angleDeltaY) {
    if (pixelDeltaY != 0)
        return -pixelDeltaY;
    return -angleDeltaY / 120.0 * 10.0;
}

void ScrollAwayState::update(double delta, bool frozen, bool canHide, double offset) {
    last = offset;
    if (!canHide || offset <= alwaysShownAbove) {
        hidden = false;
        travel = 0;
        return;
    }
    if (frozen)
        return;
    if ((delta < 0) != (travel < 0))
        travel = delta;
    else
        travel += delta;
    if (!hidden && travel > hideAfter) {
        hidden = true;
        travel = 0;
    } else if (hidden && travel < -showAfter) {
        hidden = false;
        travel = 0;
    }
}

bool PullToRefreshState::update(double overscroll) {
    progress = std::clamp(overscroll / std::max(distance, 1.0), 0.0, 1.0);
    if (progress >= 1 && armed) {
        armed = false;
        return true;
    }
    if (overscroll <= 0.5)
        armed = true;
    return false;
}

double SidebarMarqueeMotion::position(double now) const {
    const double e = std::max(now - start, 0.0);
    const double p = duration > 0 ? std::min(e / duration, 1.0) : 1.0;
    return origin + fromSpeed * std::min(e, duration) +
           (toSpeed - fromSpeed) * duration * (std::pow(p, 3) - 0.5 * std::pow(p, 4)) +
           toSpeed * std::max(e - duration, 0.0);
}

double SidebarMarqueeMotion::speedAt(double now) const {
    const double e = std::max(now - start, 0.0);
    const double p = duration > 0 ? std::min(e / duration, 1.0) : 1.0;
    return fromSpeed + (toSpeed - fromSpeed) * p * p * (3 - 2 * p);
}

double SidebarMarqueeMotion::stride(double textWidth) {
    return std::max(textWidth + spacing, 1.0);
}

} // namespace MirlPlayer
