#include "platform/linux/x11/X11Screens.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QScreen>

// Xlib last: its macros must not reach Qt's headers.
#include <X11/Xlib.h>

namespace MirlPlayer {

ScreenFlip ScreenFlip::current() {
    const QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary)
        return {};
    const QRect g = primary->geometry();
    return {double(g.y() + g.height())};
}

double ScreenFlip::pixelRatio() {
    const QScreen* primary = QGuiApplication::primaryScreen();
    return primary ? primary->devicePixelRatio() : 1.0;
}

QtScreenInfo::QtScreenInfo(QObject* parent)
    : QObject(parent) {
    auto* app = qGuiApp;
    if (app) {
        connect(app, &QGuiApplication::screenAdded, this, [this](QScreen* s) {
            watch(s);
            notifyChanged();
        });
        connect(app, &QGuiApplication::screenRemoved, this, [this] { notifyChanged(); });
        connect(app, &QGuiApplication::primaryScreenChanged, this, [this] { notifyChanged(); });
        for (QScreen* s : QGuiApplication::screens())
            watch(s);
    }
    QDBusConnection::systemBus().connect(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
        SLOT(prepareForSleep(bool)));
}

void QtScreenInfo::watch(QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, [this] { notifyChanged(); });
}

void QtScreenInfo::prepareForSleep(bool sleeping) {
    if (!sleeping)
        notifyChanged();
}

ScreenDescription QtScreenInfo::describe(QScreen* screen, const ScreenFlip& flip) {
    ScreenDescription d;
    d.name = screen->name();
    d.frame = flip.toBottomLeft(QRectF(screen->geometry()));
    return d;
}

QList<ScreenDescription> QtScreenInfo::screens() {
    QList<ScreenDescription> list;
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary)
        return list;
    const ScreenFlip flip = ScreenFlip::current();
    list.append(describe(primary, flip));
    for (QScreen* s : QGuiApplication::screens()) {
        if (s != primary)
            list.append(describe(s, flip));
    }
    return list;
}

std::optional<ScreenDescription> QtScreenInfo::mainScreen() {
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary)
        return std::nullopt;
    return describe(primary, ScreenFlip::current());
}

X11Pointer::X11Pointer()
    : m_display(X11::openDisplay()) {}

void X11Pointer::query() {
    if (!m_display)
        return;
    Display* d = m_display.get();
    Window root = 0, child = 0;
    int rootX = 0, rootY = 0, winX = 0, winY = 0;
    unsigned int mask = 0;
    if (!XQueryPointer(d, DefaultRootWindow(d), &root, &child, &rootX, &rootY, &winX, &winY, &mask))
        return; // the pointer is on another screen of the display: keep the last reading
    const double ratio = ScreenFlip::pixelRatio();
    m_last = ScreenFlip::current().toBottomLeft(QPointF(rootX / ratio, rootY / ratio));
    m_buttons = ((mask & Button1Mask) ? 1u : 0u) | ((mask & Button3Mask) ? 2u : 0u);
}

QPointF X11Pointer::location() {
    query();
    return m_last;
}

unsigned X11Pointer::pressedButtons() {
    query();
    return m_buttons;
}

} // namespace MirlPlayer
