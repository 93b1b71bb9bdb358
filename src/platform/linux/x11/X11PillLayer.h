#pragma once

#include "platform/PillLayer.h"

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QRect>

class QWindow;

namespace MirlPlayer {

// The pill layer on X11: a child window of the panel window with the same visual, placed over the
// pill, taking no input (an empty input shape, so presses and the pointer reach the panel window
// beneath), with no background of its own (mapping it shows nothing but what is put into it).
// Each picture goes to the server in one request on Qt's own connection; there is no round trip
// but the one that learns the window's depth, once. Exposures ask for the picture again.
class X11PillLayer : public PillLayer, private QAbstractNativeEventFilter {
public:
    explicit X11PillLayer(QWindow* window);
    ~X11PillLayer() override;
    X11PillLayer(const X11PillLayer&) = delete;
    X11PillLayer& operator=(const X11PillLayer&) = delete;

    bool show(const QImage& picture, QPoint at) override;
    void hide() override;
    bool shown() const override { return m_mapped; }
    // The X window, 0 before the first picture.
    quint32 windowId() const { return m_id; }

private:
    bool create();
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

    QPointer<QWindow> m_window;
    quint32 m_id = 0;
    quint32 m_gc = 0;
    quint8 m_depth = 0;
    bool m_failed = false;
    bool m_mapped = false;
    QRect m_geometry;
};

} // namespace MirlPlayer
