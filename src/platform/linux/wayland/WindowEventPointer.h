#pragma once

#include "platform/Pointer.h"

#include <QObject>
#include <QPointer>
#include <QWindow>
#include <functional>

namespace MirlPlayer {

// The pointer as one window sees it: the position from the window's own motion and leave
// events, the buttons from its presses and releases. A Wayland compositor tells a client where
// the pointer is only while it is over that client's surface, so this is all the panel can know
// there; once the pointer has left (and before it first comes) it counts as `away`, outside
// every rectangle of the panel. An enter alone tells nothing: XWayland also sends one when the
// window changes under the last position it knew, which the pointer may have left long ago,
// while a real arrival always comes with motion.
class WindowEventPointer : public QObject, public Pointer {
public:
    // Far outside any screen.
    static constexpr QPointF away{-1.0e6, -1.0e6};

    // `toScreen` turns Qt's global position (top-left origin) into screen points (bottom-left
    // origin of the primary screen).
    explicit WindowEventPointer(std::function<QPointF(QPointF)> toScreen,
                                QObject* parent = nullptr);
    void attach(QWindow* window);
    PointerReading read() override { return m_reading; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<QPointF(QPointF)> m_toScreen;
    QPointer<QWindow> m_window;
    PointerReading m_reading{away, 0};
};

} // namespace MirlPlayer
