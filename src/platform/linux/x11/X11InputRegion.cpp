#include "platform/linux/x11/X11InputRegion.h"

#include "platform/linux/x11/X11Connection.h"

#include <algorithm>

#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace MirlPlayer {

bool X11InputRegion::connected() const {
    return X11::connection() != nullptr;
}

void X11InputRegion::apply(unsigned long window, const QRect& rect) {
    xcb_connection_t* c = X11::connection();
    if (!c || !window)
        return;
    const xcb_rectangle_t r{int16_t(rect.x()), int16_t(rect.y()),
                            uint16_t(std::max(0, rect.width())),
                            uint16_t(std::max(0, rect.height()))};
    // Checked, and the answer dropped: a window destroyed meanwhile is no error worth a word.
    const auto cookie = xcb_shape_rectangles_checked(
        c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, xcb_window_t(window),
        0, 0, rect.isEmpty() ? 0 : 1, &r);
    xcb_discard_reply(c, cookie.sequence);
    xcb_flush(c);
}

void X11InputRegion::releaseKeyboard() {
    xcb_connection_t* c = X11::connection();
    if (!c)
        return;
    xcb_set_input_focus(c, XCB_INPUT_FOCUS_POINTER_ROOT, XCB_INPUT_FOCUS_POINTER_ROOT,
                        XCB_CURRENT_TIME);
    xcb_flush(c);
}

} // namespace MirlPlayer
