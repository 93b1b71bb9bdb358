#include "panel/logic/Spring.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace MirlPlayer {

Spring::State Spring::evolve(double d0, double v0, double t) const {
    if (t <= 0)
        return {d0, v0};
    if (response <= 0)
        return {0, 0};
    const double omega = 2 * std::numbers::pi / response;
    const double zeta = std::clamp(dampingFraction, 0.0, 1.0);
    if (zeta >= 1.0) {
        const double decay = std::exp(-omega * t);
        const double b = v0 + omega * d0;
        return {(d0 + b * t) * decay, (v0 - omega * b * t) * decay};
    }
    const double a = zeta * omega;
    const double wd = omega * std::sqrt(1 - zeta * zeta);
    const double decay = std::exp(-a * t);
    const double c = std::cos(wd * t);
    const double s = std::sin(wd * t);
    return {decay * (d0 * c + (v0 + a * d0) / wd * s),
            decay * (v0 * c - (a * v0 + omega * omega * d0) / wd * s)};
}

double Spring::progress(double t) const {
    if (t <= 0)
        return 0;
    if (response <= 0 || t >= settlingTime())
        return 1;
    return 1 - evolve(1, 0, t).displacement;
}

double Spring::settlingTime() const {
    if (response <= 0)
        return 0;
    const double omega = 2 * std::numbers::pi / response;
    const double zeta = std::clamp(dampingFraction, 0.05, 1.0);
    // The envelope e^(-zeta*omega*t) falls below 1e-3 after 6.9 / (zeta*omega); a fifth more
    // covers the oscillating factor, and 2/omega the linear factor of the critically damped case.
    return 1.2 * 6.9 / (zeta * omega) + (zeta >= 1.0 ? 2.0 / omega : 0.0);
}

void SpringAxis::retarget(double target, const Spring& spring, double now) {
    const Sample here = state(now);
    if (spring.response <= 0) {
        jump(target);
        return;
    }
    if (target == m_target && m_moving && spring == m_spring)
        return;
    m_previous = m_moving ? m_spring : spring;
    m_origin = here.value;
    m_launch = here.velocity;
    m_target = target;
    m_spring = spring;
    m_start = now;
    m_moving = true;
}

void SpringAxis::jump(double value) {
    m_origin = m_target = value;
    m_launch = 0;
    m_moving = false;
}

SpringAxis::Sample SpringAxis::state(double now) const {
    if (!m_moving)
        return {m_target, 0};
    const double t = now - m_start;
    const double d0 = m_origin - m_target;
    const Spring::State next = m_spring.evolve(d0, m_launch, t);
    if (m_spring.blend <= 0 || t >= m_spring.blend)
        return {m_target + next.displacement, next.velocity};
    // Within the blend both springs start from the same value and speed, so the mix is as
    // continuous as either; the weight's own change adds its share of the speed.
    const Spring::State old = m_previous.evolve(d0, m_launch, t);
    const double w = t / m_spring.blend;
    const double d = old.displacement + (next.displacement - old.displacement) * w;
    const double v = old.velocity + (next.velocity - old.velocity) * w +
                     (next.displacement - old.displacement) / m_spring.blend;
    return {m_target + d, v};
}

bool SpringAxis::settled(double now) const {
    if (!m_moving)
        return true;
    const double t = now - m_start;
    if (t < m_spring.blend)
        return false;
    const Sample s = state(now);
    const double span = std::max(1.0, std::abs(m_origin - m_target));
    const bool still =
        std::abs(s.value - m_target) < 1e-3 * span && std::abs(s.velocity) < 1e-2 * span;
    // A fast launch may take longer than a start at rest; three settling times end any motion.
    return still || t >= 3 * m_spring.settlingTime();
}

} // namespace MirlPlayer
