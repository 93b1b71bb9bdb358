#include "platform/linux/x11/X11ChangeWatch.h"

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11WindowFacts.h"

#include <QGuiApplication>
#include <QScreen>

#include <cstdlib>

#include <xcb/xcb.h>
#include <xcb/xinput.h>

namespace MirlPlayer {

using namespace X11;

X11ChangeWatch::X11ChangeWatch() {
    xcb_connection_t* c = connection();
    // Only Qt's connection has a reader for the events; on a private one they would pile up.
    if (!c || !sharedWithQt() || !qGuiApp)
        return;
    const quint32 root = m_root = rootWindow();
    const xcb_setup_t* setup = xcb_get_setup(c);
    m_ownIdBase = setup->resource_id_base;
    m_ownIdMask = setup->resource_id_mask;

    // Event masks are per client: add to what the connection already selects on the root.
    // Motion and crossings on the root itself catch the warps that raw events miss.
    Reply<xcb_get_window_attributes_reply_t> attrs(
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, root), nullptr));
    const quint32 mask = (attrs ? attrs->your_event_mask : 0) | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                         XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_POINTER_MOTION |
                         XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
    xcb_change_window_attributes(c, root, XCB_CW_EVENT_MASK, &mask);
    m_windowEvents = true;
    for (const QByteArray& name : X11WindowFacts::propertiesRead())
        m_listAtoms.append(atom(name.constData()));
    // The list's bounds and the display rectangle follow the screens.
    const auto screensMoved = [this] { m_windowsChanged = true; };
    const auto watchScreen = [this, screensMoved](QScreen* s) {
        QObject::connect(s, &QScreen::geometryChanged, &m_screenWatch, screensMoved);
    };
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &m_screenWatch,
                     [screensMoved, watchScreen](QScreen* s) {
                         watchScreen(s);
                         screensMoved();
                     });
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &m_screenWatch, screensMoved);
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &m_screenWatch, screensMoved);
    for (QScreen* s : QGuiApplication::screens())
        watchScreen(s);

    // Qt has agreed on XInput 2 with the server already when it uses it, and a server refuses a
    // client that then asks for a lower version: select at once, and only when that is refused
    // (nobody agreed on a version yet) agree on one and select again.
    const xcb_query_extension_reply_t* xi = xcb_get_extension_data(c, &xcb_input_id);
    if (xi && xi->present) {
        struct {
            xcb_input_event_mask_t head;
            quint32 bits;
        } select{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                 XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                     XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
        const auto trySelect = [&] {
            const auto cookie = xcb_input_xi_select_events_checked(c, root, 1, &select.head);
            xcb_generic_error_t* error = xcb_request_check(c, cookie);
            const bool selected = error == nullptr;
            std::free(error);
            return selected;
        };
        m_pointerEvents = trySelect();
        if (!m_pointerEvents) {
            Reply<xcb_input_xi_query_version_reply_t> version(
                xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 4), nullptr));
            m_pointerEvents = version && version->major_version >= 2 && trySelect();
        }
        if (m_pointerEvents)
            m_xinputOpcode = xi->major_opcode;
    }
    xcb_flush(c);
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11ChangeWatch::~X11ChangeWatch() {
    if (auto* app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
}

void X11ChangeWatch::watchWindow(quint32 window) {
    xcb_connection_t* c = connection();
    if (!m_windowEvents || !c || (window & ~m_ownIdMask) == m_ownIdBase)
        return;
    // Another client's window: this connection selects nothing else on it. A window that is
    // gone by now makes an error, dropped here rather than reported to Qt.
    const quint32 mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_discard_reply(
        c, xcb_change_window_attributes_checked(c, window, XCB_CW_EVENT_MASK, &mask).sequence);
}

bool X11ChangeWatch::takePointerChange() {
    const bool changed = m_pointerMoved || !m_pointerEvents;
    m_pointerMoved = false;
    return changed;
}

bool X11ChangeWatch::takeWindowChange() {
    const bool changed = m_windowsChanged || !m_windowEvents;
    m_windowsChanged = false;
    return changed;
}

bool X11ChangeWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & ~0x80) {
    case XCB_GE_GENERIC: {
        const auto* ge = static_cast<const xcb_ge_generic_event_t*>(message);
        if (m_xinputOpcode && ge->extension == m_xinputOpcode &&
            (ge->event_type == XCB_INPUT_RAW_MOTION ||
             ge->event_type == XCB_INPUT_RAW_BUTTON_PRESS ||
             ge->event_type == XCB_INPUT_RAW_BUTTON_RELEASE))
            m_pointerMoved = true;
        break;
    }
    case XCB_MOTION_NOTIFY:
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        // Motion and crossing share the layout of their window fields.
        if (static_cast<const xcb_motion_notify_event_t*>(message)->event == m_root)
            m_pointerMoved = true;
        break;
    case XCB_CREATE_NOTIFY:
    case XCB_DESTROY_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
    case XCB_GRAVITY_NOTIFY:
        m_windowsChanged = true;
        break;
    case XCB_PROPERTY_NOTIFY:
        if (m_listAtoms.contains(static_cast<const xcb_property_notify_event_t*>(message)->atom))
            m_windowsChanged = true;
        break;
    default:
        break;
    }
    return false; // Qt goes on with every event as ever
}

PointerReading WatchedPointer::read() {
    if (m_watch.takePointerChange() || !m_last)
        m_last = m_inner.read();
    return *m_last;
}

std::optional<WindowList> WatchedWindowFacts::onScreenWindows() {
    const bool extra = m_extra && m_extra();
    // Both marks are taken before the read, so a change during it asks again next time.
    const bool changed = m_watch.takeWindowChange();
    if (changed || !m_last || extra != m_lastExtra) {
        m_last = m_inner.onScreenWindows();
        m_lastExtra = extra;
    }
    return m_last;
}

} // namespace MirlPlayer
