#include "platform/linux/x11/X11Pointer.h"

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Screens.h"

#include <xcb/xcb.h>

namespace MirlPlayer {

PointerReading X11Pointer::read() {
    xcb_connection_t* c = X11::connection();
    if (!c)
        return m_last;
    X11::Reply<xcb_query_pointer_reply_t> r(
        xcb_query_pointer_reply(c, xcb_query_pointer(c, X11::rootWindow()), nullptr));
    // On another screen of the display the pointer is not ours to read: keep the last reading.
    if (!r || !r->same_screen)
        return m_last;
    const double ratio = ScreenFlip::pixelRatio();
    m_last.location =
        ScreenFlip::current().toBottomLeft(QPointF(r->root_x / ratio, r->root_y / ratio));
    m_last.buttons =
        ((r->mask & XCB_BUTTON_MASK_1) ? 1u : 0u) | ((r->mask & XCB_BUTTON_MASK_3) ? 2u : 0u);
    return m_last;
}

} // namespace MirlPlayer
