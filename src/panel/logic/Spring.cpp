#include "panel/logic/Spring.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace MirlPlayer {

double Spring::progress(double t) const {
    if (t <= 0)
        return 0;
    if (response <= 0)
        return 1;
    const double omega = 2 * std::numbers::pi / response;
    const double zeta = std::clamp(dampingFraction, 0.0, 1.0);
    if (t >= settlingTime())
        return 1;
    if (zeta >= 1.0) {
        return 1 - (1 + omega * t) * std::exp(-omega * t);
    }
    const double wd = omega * std::sqrt(1 - zeta * zeta);
    const double decay = std::exp(-zeta * omega * t);
    return 1 - decay * (std::cos(wd * t) + zeta * omega / wd * std::sin(wd * t));
}

double Spring::progressRate(double t) const {
    // The step response's rate is omega^2 times the response to a unit velocity.
    const double omega = response > 0 ? 2 * std::numbers::pi / response : 0;
    return omega * omega * carry(t);
}

double Spring::carry(double t) const {
    if (t <= 0 || response <= 0 || t >= settlingTime())
        return 0;
    const double omega = 2 * std::numbers::pi / response;
    const double zeta = std::clamp(dampingFraction, 0.0, 1.0);
    if (zeta >= 1.0)
        return t * std::exp(-omega * t);
    const double wd = omega * std::sqrt(1 - zeta * zeta);
    return std::exp(-zeta * omega * t) * std::sin(wd * t) / wd;
}

double Spring::carryRate(double t) const {
    if (t < 0 || response <= 0 || t >= settlingTime())
        return 0;
    const double omega = 2 * std::numbers::pi / response;
    const double zeta = std::clamp(dampingFraction, 0.0, 1.0);
    if (zeta >= 1.0)
        return (1 - omega * t) * std::exp(-omega * t);
    const double wd = omega * std::sqrt(1 - zeta * zeta);
    return std::exp(-zeta * omega * t) * (std::cos(wd * t) - zeta * omega / wd * std::sin(wd * t));
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

} // namespace MirlPlayer
