#include "platform/linux/x11/X11Screens.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QScreen>

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

} // namespace MirlPlayer
