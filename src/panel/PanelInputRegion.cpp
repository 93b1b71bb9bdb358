#include "panel/PanelInputRegion.h"

#include <QGuiApplication>
#include <QWindow>
#include <QtGui/qguiapplication_platform.h>

#include <X11/Xlib.h>
#include <X11/extensions/shape.h>

namespace MirlPlayer {

bool setInputRegion(QWindow& window, const QRect& region) {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->display() || !window.handle())
        return false;
    Display* display = x11->display();
    int eventBase = 0;
    int errorBase = 0;
    if (!XShapeQueryExtension(display, &eventBase, &errorBase))
        return false;
    // The window's native pixels: Qt's device-independent rectangle times the scale factor.
    const qreal scale = window.devicePixelRatio();
    XRectangle rect;
    rect.x = short(region.x() * scale);
    rect.y = short(region.y() * scale);
    rect.width = ushort(std::max(0.0, region.width() * scale));
    rect.height = ushort(std::max(0.0, region.height() * scale));
    XShapeCombineRectangles(display, Window(window.winId()), ShapeInput, 0, 0, &rect,
                            region.isEmpty() ? 0 : 1, ShapeSet, Unsorted);
    XFlush(display);
    return true;
}

} // namespace MirlPlayer
