#include "platform/linux/x11/WindowFade.h"

#include <QWindow>
#include <algorithm>

namespace MirlPlayer {

WindowFade::WindowFade(QWindow* window, QObject* parent)
    : QObject(parent)
    , m_window(window) {
    m_timer.setInterval(16);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &WindowFade::step);
}

void WindowFade::start(double alpha, double seconds) {
    if (!m_window)
        return;
    m_from = m_window->opacity();
    m_to = alpha;
    m_ms = std::max(0.0, seconds * 1000);
    m_clock.start();
    step(); // a fade of no length lands at once
    if (m_ms > 0)
        m_timer.start();
}

void WindowFade::step() {
    const double t = m_ms > 0 ? std::min(1.0, double(m_clock.elapsed()) / m_ms) : 1.0;
    if (m_window)
        m_window->setOpacity(t >= 1 ? m_to : m_from + (m_to - m_from) * t);
    if (t >= 1 || !m_window)
        m_timer.stop();
}

} // namespace MirlPlayer
