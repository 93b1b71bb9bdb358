#pragma once

#include <QRect>

namespace MirlPlayer {

// Sets a window's XShape input region: clicks outside it fall through to whatever lies beneath,
// while drawing is untouched (a plain window mask would clip the drawing too). Works over the
// process's one X connection.
class X11InputRegion {
public:
    bool connected() const;
    // `rect` is in the window's own pixels; an empty rectangle makes the window click-through.
    void apply(unsigned long window, const QRect& rect);
    // Gives the keyboard focus back to the window under the pointer.
    void releaseKeyboard();
};

} // namespace MirlPlayer
