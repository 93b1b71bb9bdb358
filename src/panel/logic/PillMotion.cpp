#include "panel/logic/PillMotion.h"

namespace MirlPlayer {

PillMotion::PillMotion(NotchLayout& layout, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_layout(&layout)
    , m_clock(clock) {
    m_timer.setInterval(16);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PillMotion::advance);
    m_to = m_from = m_value = targets();
    for (auto signal : {&NotchLayout::pillCenterXChanged, &NotchLayout::pillTopChanged,
                        &NotchLayout::pillSizeChanged})
        connect(&layout, signal, this, &PillMotion::retarget);
}

std::array<double, 4> PillMotion::targets() const {
    if (!m_layout)
        return m_to;
    return {m_layout->pillCenterX(), m_layout->pillTop(), m_layout->pillSize().width(),
            m_layout->pillSize().height()};
}

void PillMotion::retarget() {
    const auto to = targets();
    if (to == m_to)
        return;
    const auto motion = m_layout ? m_layout->motion() : std::nullopt;
    if (!motion || motion->response <= 0) {
        // No animation: jump, and stop anything under way.
        m_from = m_to = m_value = to;
        m_velocity = {};
        const bool wasMoving = moving();
        m_timer.stop();
        Q_EMIT changed();
        if (wasMoving)
            Q_EMIT movingChanged();
        return;
    }
    // A new motion starts from wherever the pill is drawn now, at the speed it moves there.
    advance();
    const double t = m_clock.now() - m_start;
    for (size_t i = 0; i < m_value.size(); ++i)
        m_velocity[i] = (m_to[i] - m_from[i]) * m_spring.progressRate(t) +
                        m_velocity[i] * m_spring.carryRate(t);
    m_from = m_value;
    m_to = to;
    m_spring = *motion;
    m_start = m_clock.now();
    if (!moving()) {
        m_timer.start();
        Q_EMIT movingChanged();
    }
}

void PillMotion::advance() {
    const double t = m_clock.now() - m_start;
    const double p = m_spring.progress(t);
    std::array<double, 4> next;
    for (size_t i = 0; i < next.size(); ++i)
        next[i] = m_from[i] + (m_to[i] - m_from[i]) * p + m_velocity[i] * m_spring.carry(t);
    const bool settled = t >= m_spring.settlingTime();
    if (settled) {
        next = m_to;
        m_velocity = {};
    }
    if (next != m_value) {
        m_value = next;
        Q_EMIT changed();
    }
    if (settled && moving()) {
        m_timer.stop();
        Q_EMIT movingChanged();
    }
}

} // namespace MirlPlayer
