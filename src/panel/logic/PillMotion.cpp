#include "panel/logic/PillMotion.h"

namespace MirlPlayer {

PillMotion::PillMotion(NotchLayout& layout, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_layout(&layout)
    , m_clock(clock) {
    m_timer.setInterval(16);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PillMotion::advance);
    m_to = m_value = targets();
    for (size_t i = 0; i < m_axes.size(); ++i)
        m_axes[i].jump(m_value[i]);
    for (auto signal : {&NotchLayout::pillCenterXChanged, &NotchLayout::pillTopChanged,
                        &NotchLayout::pillSizeChanged})
        connect(&layout, signal, this, &PillMotion::retarget);
    connect(&layout, &NotchLayout::expandedChanged, this, &PillMotion::retarget);
}

PillMotion::Values PillMotion::targets() const {
    if (!m_layout)
        return m_to;
    return {m_layout->pillCenterX(), m_layout->pillTop(), m_layout->pillSize().width(),
            m_layout->pillSize().height(), m_layout->expanded() ? openRadius : restingRadius};
}

void PillMotion::retarget() {
    const Values to = targets();
    if (to == m_to)
        return;
    m_to = to;
    const auto motion = m_layout ? m_layout->motion() : std::nullopt;
    const double now = m_clock.now();
    if (!motion || motion->response <= 0) {
        // No animation: jump, and stop anything under way.
        for (size_t i = 0; i < m_axes.size(); ++i)
            m_axes[i].jump(to[i]);
        const bool wasMoving = moving();
        m_timer.stop();
        m_value = to;
        Q_EMIT changed();
        if (wasMoving)
            Q_EMIT movingChanged();
        return;
    }
    for (size_t i = 0; i < m_axes.size(); ++i)
        m_axes[i].retarget(to[i], *motion, now);
    if (!moving()) {
        m_timer.start();
        Q_EMIT movingChanged();
    }
}

void PillMotion::advance() {
    const double now = m_clock.now();
    Values next;
    bool settled = true;
    for (size_t i = 0; i < m_axes.size(); ++i) {
        next[i] = m_axes[i].value(now);
        settled = settled && m_axes[i].settled(now);
    }
    if (settled)
        next = m_to;
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
