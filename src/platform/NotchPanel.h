#pragma once

#include <QRectF>

namespace MirlPlayer {

// The seam to the panel window, as the panel controller drives it: one borderless, screen-wide
// window that never activates the application. X11NotchPanel adapts a Qt window to it; tests use
// a fake.
// Rectangles given to `setFrame` are screen points with a bottom-left origin; the hit rectangle
// is in the window's own coordinates (top-left origin), as the view draws.
class NotchPanel {
public:
    virtual ~NotchPanel() = default;

    // 27 stands above the menu bar (resting pill), 3 below menus and popovers (open card).
    virtual void setLevel(int level) = 0;
    virtual QRectF frame() const = 0;
    virtual void setFrame(const QRectF& frame) = 0;
    // Shows the window without activating the application.
    virtual void orderFrontRegardless() = 0;
    virtual void orderOut() = 0;
    // While ignoring, every click falls through to what lies beneath; otherwise clicks inside
    // the hit rectangle reach the panel.
    virtual void setIgnoresMouseEvents(bool ignores) = 0;
    virtual void setHitRect(const QRectF& rect) = 0;
    // Where the stage machine needs to know of the pointer (window coordinates, like the hit
    // rectangle): the trigger at rest, the hold rectangle otherwise. A window that sees the
    // pointer only over itself (a Wayland session) takes the pointer there too; a window whose
    // pointer is polled ignores it.
    virtual void setHoverRect(const QRectF& rect) { (void)rect; }
    // Fades the whole window to `alpha` over `seconds`.
    virtual void animateAlpha(double alpha, double seconds) = 0;
    // Gives up the keyboard (after clearing the focused item).
    virtual void resignKey() = 0;

    // The left button went down inside the panel and has not come up.
    bool pointerDownInPanel = false;
    // The library is open, so a text field in it may take the keyboard.
    bool libraryAcceptsKeyboard = false;
    // The last press landed on an editable text field.
    bool textFocusRequested = false;
};

} // namespace MirlPlayer
