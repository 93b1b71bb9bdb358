#include "core/Debouncer.h"

#include <cmath>

namespace MirlPlayer {

Debouncer::Debouncer(double interval, std::function<void()> action, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_interval(interval)
    , m_action(std::move(action))
    , m_clock(clock) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (!poll() && m_pending) {
            // Woken early (timer granularity): wait out the remainder.
            m_timer.start(int(std::ceil((m_deadline - m_clock.now()) * 1000.0)));
        }
    });
}

void Debouncer::trigger() {
    m_deadline = m_clock.now() + m_interval;
    m_pending = true;
    m_timer.start(int(std::ceil(m_interval * 1000.0)));
}

void Debouncer::cancel() {
    m_pending = false;
    m_timer.stop();
}

bool Debouncer::poll() {
    if (!m_pending || m_clock.now() < m_deadline)
        return false;
    m_pending = false;
    m_timer.stop();
    m_action();
    return true;
}

} // namespace MirlPlayer
