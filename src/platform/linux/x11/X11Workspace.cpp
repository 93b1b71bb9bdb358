#include "platform/linux/x11/X11Workspace.h"

#include "platform/linux/x11/X11Connection.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <xcb/xcb.h>

namespace MirlPlayer {

using namespace X11;

X11Workspace::X11Workspace(QObject* parent)
    : QObject(parent) {
    xcb_connection_t* c = connection();
    if (!c)
        return;
    m_activeAtom = atom("_NET_ACTIVE_WINDOW");
    // Event masks are per client: add property changes to what the connection already selects
    // on the root (Qt's own selection included), never replace it.
    const quint32 root = rootWindow();
    Reply<xcb_get_window_attributes_reply_t> attrs(
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, root), nullptr));
    const quint32 mask = (attrs ? attrs->your_event_mask : 0) | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(c, root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(c);
    if (sharedWithQt()) {
        QCoreApplication::instance()->installNativeEventFilter(this);
    } else {
        m_notifier = new QSocketNotifier(xcb_get_file_descriptor(c), QSocketNotifier::Read, this);
        connect(m_notifier, &QSocketNotifier::activated, this, &X11Workspace::readEvents);
    }
    m_lastFront = frontmost();
}

X11Workspace::~X11Workspace() {
    if (auto* app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
}

QString X11Workspace::applicationID(const QByteArray& wmClass) {
    if (wmClass.compare("spotify", Qt::CaseInsensitive) == 0)
        return QStringLiteral("com.spotify.client");
    return QString::fromLocal8Bit(wmClass);
}

Workspace::Application X11Workspace::applicationOf(quint32 window) {
    Application app;
    if (!window)
        return app;
    app.window = window;
    const unsigned classCookie = askProperty(window, atom("WM_CLASS"), XCB_ATOM_STRING);
    const unsigned pidCookie = askProperty(window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL);
    if (const auto cls = wmClass(reply(classCookie).get()))
        app.id = applicationID(*cls);
    if (const auto pid = first32(reply(pidCookie).get(), XCB_ATOM_CARDINAL))
        app.pid = qint64(*pid);
    return app;
}

Workspace::Application X11Workspace::frontmost() {
    if (!connection())
        return {};
    const auto active = first32(
        reply(askProperty(rootWindow(), m_activeAtom, XCB_ATOM_WINDOW)).get(), XCB_ATOM_WINDOW);
    return active ? applicationOf(*active) : Application{};
}

void X11Workspace::activate(const Application& app) {
    xcb_connection_t* c = connection();
    if (!c || !app.window)
        return;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = quint32(app.window);
    event.type = m_activeAtom;
    // Source indication 2 (a pager): the user's own choice, which window managers do not hold
    // back as focus stealing.
    event.data.data32[0] = 2;
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(c, 0, rootWindow(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(c);
}

bool X11Workspace::isActivation(const void* message) const {
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & ~0x80) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto* property = static_cast<const xcb_property_notify_event_t*>(message);
    return property->window == rootWindow() && property->atom == m_activeAtom;
}

bool X11Workspace::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType == "xcb_generic_event_t" && isActivation(message))
        activeWindowChanged();
    return false; // Qt goes on with the event as ever
}

void X11Workspace::readEvents() {
    xcb_connection_t* c = connection();
    if (!c)
        return;
    bool activeChanged = false;
    while (auto* event = xcb_poll_for_event(c)) {
        activeChanged = activeChanged || isActivation(event);
        std::free(event);
    }
    if (activeChanged)
        activeWindowChanged();
}

void X11Workspace::activeWindowChanged() {
    const Application front = frontmost();
    // Focus moving between windows of one application is not an activation.
    if (front.id.isEmpty() || (front.id == m_lastFront.id && front.pid == m_lastFront.pid))
        return;
    m_lastFront = front;
    notifyActivation(Event::activated, front);
}

} // namespace MirlPlayer
