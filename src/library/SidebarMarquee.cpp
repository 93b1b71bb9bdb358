#include "library/SidebarMarquee.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

SidebarMarquee::SidebarMarquee(QObject* parent)
    : SidebarMarquee(Clock::system(), parent) {}

SidebarMarquee::SidebarMarquee(Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock) {
    m_frame.setInterval(16);
    m_frame.setTimerType(Qt::PreciseTimer);
    connect(&m_frame, &QTimer::timeout, this, &SidebarMarquee::tick);
}

double SidebarMarquee::edge() const {
    return m_width > 0 ? std::min(7.0 / m_width, 0.5) : 0.5;
}

void SidebarMarquee::setTextWidth(double width) {
    if (m_textWidth == width)
        return;
    m_textWidth = width;
    reset();
}

void SidebarMarquee::setWidth(double width) {
    if (m_width == width)
        return;
    m_width = width;
    reset();
}

void SidebarMarquee::reset() {
    m_frame.stop();
    m_active = false;
    m_offset = 0;
    setGliding(false);
    Q_EMIT layoutChanged();
    Q_EMIT offsetChanged();
}

void SidebarMarquee::setGliding(bool gliding) {
    if (m_gliding == gliding)
        return;
    m_gliding = gliding;
    Q_EMIT glidingChanged();
}

void SidebarMarquee::setActive(bool active) {
    if (m_active == active)
        return;
    m_active = active;
    Q_EMIT activeChanged();
    const double now = m_clock.now();
    if (active) {
        if (fits() || m_reduceMotion)
            return;
        // Eases into motion from wherever the strip stands, even mid-stop.
        const double from = m_frame.isActive() ? m_motion.speedAt(now) : 0;
        m_motion = {now, m_offset, from, SidebarMarqueeMotion::speed, SidebarMarqueeMotion::easing};
        setGliding(true);
        m_frame.start();
    } else if (m_frame.isActive()) {
        m_motion = {now, m_offset, m_motion.speedAt(now), 0, SidebarMarqueeMotion::easing};
    }
}

void SidebarMarquee::tick() {
    const double now = m_clock.now();
    m_offset = std::fmod(m_motion.position(now), stride());
    Q_EMIT offsetChanged();
    if (!m_active && now - m_motion.start >= m_motion.duration) {
        // Stopped: the plain text returns.
        m_frame.stop();
        m_offset = 0;
        Q_EMIT offsetChanged();
        setGliding(false);
    }
}

} // namespace MirlPlayer
