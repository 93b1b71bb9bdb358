#pragma once

#include <QRect>
#include <QRectF>

namespace MirlPlayer {

// Where the panel window takes the pointer, and what the window must cover, in the frame's
// own coordinates (top-left origin). On X11 the pointer is polled on the root window, so the
// window takes the pointer only where clicks belong to the panel (the hit rectangle, unless it
// ignores the mouse). Under XWayland the window learns where the pointer is only while it is
// over the window, so it takes the pointer over the hover rectangle as well (the trigger at
// rest, the hold rectangle while open) and covers it; elsewhere clicks still pass through.
struct PanelInputRegion {
    // Larger than any window, in window pixels.
    static constexpr QRect everywhere{-16384, -16384, 32767, 32767};

    bool watchesHover = false;
    QRectF hitRect;
    bool ignoresMouse = true;
    QRectF hoverRect;

    // Empty when the window takes no pointer input at all. The hit rectangle lies inside the
    // hold rectangle, so one rectangle holds both.
    QRectF inputRect() const;
    // `drawn` grown to the hover rectangle while it is watched; an empty `drawn` (the whole
    // frame) stays empty.
    QRectF windowRect(const QRectF& drawn) const;
};

} // namespace MirlPlayer
