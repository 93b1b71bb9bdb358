#include "platform/linux/wayland/WindowEventPointer.h"

#include <QMouseEvent>

namespace MirlPlayer {

WindowEventPointer::WindowEventPointer(std::function<QPointF(QPointF)> toScreen, QObject* parent)
    : QObject(parent)
    , m_toScreen(std::move(toScreen)) {}

void WindowEventPointer::attach(QWindow* window) {
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    m_reading = {away, 0};
    if (window)
        window->installEventFilter(this);
}

namespace {
unsigned buttonBits(Qt::MouseButtons buttons) {
    return (buttons & Qt::LeftButton ? 1u : 0u) | (buttons & Qt::RightButton ? 2u : 0u);
}
} // namespace

bool WindowEventPointer::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_window)
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        m_reading = {m_toScreen(mouse->globalPosition()), buttonBits(mouse->buttons())};
        break;
    }
    case QEvent::Leave:
        // A drag that began inside goes on reporting its motion to the window until the
        // button comes up; without a button the window hears nothing more.
        if (!(m_reading.buttons & 1u))
            m_reading = {away, 0};
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace MirlPlayer
