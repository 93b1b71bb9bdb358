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
            changed();
        });
        connect(app, &QGuiApplication::screenRemoved, this, [this] { changed(); });
        connect(app, &QGuiApplication::primaryScreenChanged, this, [this] { changed(); });
        for (QScreen* s : QGuiApplication::screens())
            watch(s);
    }
    QDBusConnection::systemBus().connect(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
        SLOT(prepareForSleep(bool)));
}

void QtScreenInfo::watch(QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, [this] { changed(); });
}

void QtScreenInfo::changed() {
    m_cache.reset();
    notifyChanged();
}

void QtScreenInfo::prepareForSleep(bool sleeping) {
    if (!sleeping)
        changed();
}

ScreenDescription QtScreenInfo::describe(QScreen* screen, const ScreenFlip& flip) {
    ScreenDescription d;
    d.name = screen->name();
    d.frame = flip.toBottomLeft(QRectF(screen->geometry()));
    return d;
}

const QList<ScreenDescription>& QtScreenInfo::described() {
    // The panel's tick asks many times a second; the answer changes only with the signals above.
    if (m_cache)
        return *m_cache;
    static const QList<ScreenDescription> none;
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary)
        return none;
    QList<ScreenDescription>& list = m_cache.emplace();
    const ScreenFlip flip = ScreenFlip::current();
    list.append(describe(primary, flip));
    for (QScreen* s : QGuiApplication::screens()) {
        if (s != primary)
            list.append(describe(s, flip));
    }
    return list;
}

QList<ScreenDescription> QtScreenInfo::screens() {
    return described();
}

std::optional<ScreenDescription> QtScreenInfo::mainScreen() {
    const QList<ScreenDescription>& list = described();
    if (list.isEmpty())
        return std::nullopt;
    return list.constFirst();
}

} // namespace MirlPlayer
