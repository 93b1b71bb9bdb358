#include "audio/CaptureTimer.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

CaptureTimer::CaptureTimer(Clock& clock, std::function<void()> action, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_action(std::move(action)) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (!poll() && m_active)
            arm(); // woken early (timer granularity): wait out the rest
    });
}

void CaptureTimer::start(double interval, bool repeating) {
    m_interval = interval;
    m_repeating = repeating;
    m_due = m_clock.now() + interval;
    m_active = true;
    arm();
}

void CaptureTimer::stop() {
    m_active = false;
    m_timer.stop();
}

bool CaptureTimer::poll() {
    const double now = m_clock.now();
    if (!m_active || now < m_due)
        return false;
    if (m_repeating) {
        // Skip the periods missed while the process was not running (a suspended machine).
        while (m_due <= now)
            m_due += m_interval;
        arm();
    } else {
        m_active = false;
        m_timer.stop();
    }
    m_action();
    return true;
}

void CaptureTimer::arm() {
    const double wait = std::max(0.0, m_due - m_clock.now());
    m_timer.start(int(std::ceil(wait * 1000.0)));
}

} // namespace MirlPlayer
