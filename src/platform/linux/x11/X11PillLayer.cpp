#include "platform/linux/x11/X11PillLayer.h"

#include "platform/linux/x11/X11Connection.h"

#include <QCoreApplication>
#include <QWindow>
#include <algorithm>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace MirlPlayer {

X11PillLayer::X11PillLayer(QWindow* window)
    : m_window(window) {}

X11PillLayer::~X11PillLayer() {
    if (!m_id)
        return;
    QCoreApplication::instance()->removeNativeEventFilter(this);
    // Gone with the panel window already, when that went first.
    if (xcb_connection_t* c = X11::connection(); c && m_window && m_window->handle()) {
        xcb_free_gc(c, m_gc);
        xcb_destroy_window(c, m_id);
        xcb_flush(c);
    }
}

bool X11PillLayer::create() {
    if (m_id || m_failed)
        return m_id != 0;
    m_failed = true;
    xcb_connection_t* c = X11::connection();
    // Exposures must reach this process's event filter, so only on Qt's own connection.
    if (!c || !X11::sharedWithQt() || !m_window || !m_window->handle())
        return false;
    const xcb_window_t parent = xcb_window_t(m_window->winId());
    const X11::Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(c, xcb_get_geometry(c, parent), nullptr));
    if (!geometry || (geometry->depth != 32 && geometry->depth != 24))
        return false;
    // Pictures go as 32-bit pixels, the format of a premultiplied ARGB image in memory.
    const xcb_setup_t* setup = xcb_get_setup(c);
    bool thirtyTwo = false;
    for (auto f = xcb_setup_pixmap_formats_iterator(setup); f.rem; xcb_format_next(&f))
        thirtyTwo |= f.data->depth == geometry->depth && f.data->bits_per_pixel == 32;
    if (!thirtyTwo || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST)
        return false;
    m_depth = geometry->depth;
    m_id = xcb_generate_id(c);
    // No background: mapping shows what lay there until the picture arrives, never a blank.
    const uint32_t values[] = {XCB_BACK_PIXMAP_NONE, XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, m_id, parent, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK, values);
    // An empty input shape: the pointer and presses go to the panel window beneath.
    xcb_shape_rectangles(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, m_id,
                         0, 0, 0, nullptr);
    m_gc = xcb_generate_id(c);
    xcb_create_gc(c, m_gc, m_id, 0, nullptr);
    QCoreApplication::instance()->installNativeEventFilter(this);
    m_failed = false;
    return true;
}

bool X11PillLayer::show(const QImage& picture, QPoint at) {
    if (picture.isNull() || picture.format() != QImage::Format_ARGB32_Premultiplied || !create())
        return false;
    xcb_connection_t* c = X11::connection();
    const QRect geometry(at, picture.size());
    if (geometry != m_geometry) {
        const uint32_t values[] = {uint32_t(geometry.x()), uint32_t(geometry.y()),
                                   uint32_t(geometry.width()), uint32_t(geometry.height())};
        xcb_configure_window(c, m_id,
                             XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                 XCB_CONFIG_WINDOW_HEIGHT,
                             values);
        m_geometry = geometry;
    }
    if (!m_mapped) {
        xcb_map_window(c, m_id);
        m_mapped = true;
    }
    // As many rows a request as the server takes (a request's header is 24 bytes).
    const qsizetype stride = picture.bytesPerLine();
    const qsizetype room = qsizetype(xcb_get_maximum_request_length(c)) * 4 - 24;
    const int rowsPerRequest = std::max(1, int(room / stride));
    for (int y = 0; y < picture.height(); y += rowsPerRequest) {
        const int rows = std::min(rowsPerRequest, picture.height() - y);
        xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, m_id, m_gc, uint16_t(picture.width()),
                      uint16_t(rows), 0, int16_t(y), 0, m_depth, uint32_t(stride * rows),
                      picture.constScanLine(y));
    }
    xcb_flush(c);
    return true;
}

void X11PillLayer::hide() {
    if (!m_mapped)
        return;
    m_mapped = false;
    if (xcb_connection_t* c = X11::connection()) {
        xcb_unmap_window(c, m_id);
        xcb_flush(c);
    }
}

bool X11PillLayer::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
    if (type != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != XCB_EXPOSE)
        return false;
    const auto* expose = static_cast<const xcb_expose_event_t*>(message);
    if (expose->window == m_id && expose->count == 0 && m_mapped && onLost)
        onLost();
    return false;
}

} // namespace MirlPlayer
