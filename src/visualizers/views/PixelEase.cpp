#include "visualizers/views/PixelEase.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

namespace {

// Quadratic ease-out: the share of the way done at a share of the time.
double easeOut(double t) {
    return 1 - (1 - t) * (1 - t);
}

} // namespace

PixelEase::PixelEase(QObject* parent)
    : QObject(parent) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PixelEase::poll);
}

double PixelEase::snapped(double v) const {
    return std::round(v / m_step) * m_step;
}

double PixelEase::exactAt(double now) const {
    const double t = m_duration > 0 ? (now - m_startedAt) / m_duration : 1;
    return t >= 1 ? m_to : m_from + (m_to - m_from) * easeOut(std::max(t, 0.0));
}

void PixelEase::setStep(double step) {
    if (!(step > 0) || step == m_step)
        return;
    m_step = step;
    Q_EMIT stepChanged();
    if (m_hasValue)
        poll();
}

void PixelEase::setTarget(double target) {
    if (target == m_to && m_hasValue)
        return;
    const double now = m_clock->now();
    // A new target eases on from wherever the last ease has got to, as an interrupted
    // animation does.
    m_from = m_hasValue ? exactAt(now) : target;
    m_to = target;
    m_startedAt = now;
    m_hasValue = true;
    Q_EMIT targetChanged();
    poll();
}

void PixelEase::poll() {
    const double now = m_clock->now();
    const double shown = snapped(exactAt(now));
    if (shown != m_value) {
        m_value = shown;
        Q_EMIT valueChanged();
    }
    // Between targets the ease is not looked at: the next target comes with the next level array,
    // when the scene draws anyway. Only its end is due on its own, so that it rests on the target.
    const double endsAt = m_startedAt + m_duration;
    m_moving = snapped(m_to) != shown && now < endsAt;
    if (!m_moving) {
        m_timer.stop();
        return;
    }
    m_nextAt = endsAt;
    m_timer.start(std::max(1, int(std::ceil((m_nextAt - now) * 1000))));
}

} // namespace MirlPlayer
