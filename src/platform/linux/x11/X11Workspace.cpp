#include "platform/linux/x11/X11Workspace.h"

#include <QRect>
#include <QSocketNotifier>

// Xlib last: its macros must not reach Qt's headers.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/shape.h>

namespace MirlPlayer {

using namespace X11;

X11Workspace::X11Workspace(QObject* parent)
    : QObject(parent)
    , m_display(openDisplay()) {
    if (!m_display)
        return;
    m_atoms = std::make_unique<Atoms>(m_display.get());
    Display* d = m_display.get();
    XSelectInput(d, DefaultRootWindow(d), PropertyChangeMask);
    XFlush(d);
    m_notifier = new QSocketNotifier(ConnectionNumber(d), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &X11Workspace::readEvents);
    m_lastFront = frontmost();
}

X11Workspace::~X11Workspace() = default;

QString X11Workspace::applicationID(const QByteArray& wmClass) {
    if (wmClass.compare("spotify", Qt::CaseInsensitive) == 0)
        return QStringLiteral("com.spotify.client");
    return QString::fromLocal8Bit(wmClass);
}

Workspace::Application X11Workspace::applicationOf(unsigned long window) {
    Application app;
    if (!m_display || !window)
        return app;
    Display* d = m_display.get();
    app.window = window;
    if (const auto cls = wmClass(d, window))
        app.id = applicationID(cls->second);
    if (const auto pid = cardinal(d, window, (*m_atoms)("_NET_WM_PID"), XA_CARDINAL))
        app.pid = qint64(*pid);
    return app;
}

Workspace::Application X11Workspace::frontmost() {
    if (!m_display)
        return {};
    Display* d = m_display.get();
    const auto active =
        cardinal(d, DefaultRootWindow(d), (*m_atoms)("_NET_ACTIVE_WINDOW"), XA_WINDOW);
    // A reply read here may have brought events along; the socket will not announce those again.
    if (XEventsQueued(d, QueuedAlready) > 0)
        QMetaObject::invokeMethod(this, &X11Workspace::readEvents, Qt::QueuedConnection);
    return active ? applicationOf(*active) : Application{};
}

void X11Workspace::activate(const Application& app) {
    if (!m_display || !app.window)
        return;
    Display* d = m_display.get();
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = Window(app.window);
    event.xclient.message_type = (*m_atoms)("_NET_ACTIVE_WINDOW");
    event.xclient.format = 32;
    // Source indication 2 (a pager): the user's own choice, which window managers do not
    // hold back as focus stealing.
    event.xclient.data.l[0] = 2;
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(d, DefaultRootWindow(d), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(d);
}

void X11Workspace::readEvents() {
    Display* d = m_display.get();
    bool activeChanged = false;
    while (XPending(d)) {
        XEvent event;
        XNextEvent(d, &event);
        if (event.type == PropertyNotify &&
            event.xproperty.atom == (*m_atoms)("_NET_ACTIVE_WINDOW"))
            activeChanged = true;
    }
    if (!activeChanged)
        return;
    const Application front = frontmost();
    // Focus moving between windows of one application is not an activation.
    if (front.id.isEmpty() || (front.id == m_lastFront.id && front.pid == m_lastFront.pid))
        return;
    m_lastFront = front;
    notifyActivation(Event::activated, front);
}

X11InputRegion::X11InputRegion()
    : m_display(openDisplay()) {}

X11InputRegion::~X11InputRegion() = default;

void X11InputRegion::apply(unsigned long window, const QRect& rect) {
    if (!m_display || !window)
        return;
    XRectangle r{short(rect.x()), short(rect.y()), (unsigned short)(std::max(0, rect.width())),
                 (unsigned short)(std::max(0, rect.height()))};
    XShapeCombineRectangles(m_display.get(), Window(window), ShapeInput, 0, 0, &r,
                            rect.isEmpty() ? 0 : 1, ShapeSet, Unsorted);
    XFlush(m_display.get());
}

void X11InputRegion::releaseKeyboard() {
    if (!m_display)
        return;
    XSetInputFocus(m_display.get(), PointerRoot, RevertToPointerRoot, CurrentTime);
    XFlush(m_display.get());
}

} // namespace MirlPlayer
