#include "look/ReflectionEnvelope.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

const std::vector<double>& ReflectionEnvelope::update(const QList<double>& source, int count,
                                                      double attack, double release, double now) {
    count = std::max(count, 0);
    double elapsed = now - m_last;
    if (m_mags.size() != size_t(count)) {
        m_mags.assign(size_t(count), 0.0);
        elapsed = 0;
    }
    elapsed = std::clamp(std::isfinite(elapsed) ? elapsed : 0.0, 0.0, 0.1);
    m_last = now;
    if (source.size() < count || elapsed <= 0 || count == 0)
        return m_mags;
    const double up = std::exp(-elapsed / ((1 - attack) * 0.26 + 0.004));
    const double down = std::exp(-elapsed / (release * 1.65 + 0.05));
    const qsizetype group = source.size() / count;
    for (int i = 0; i < count; ++i) {
        double peak = 0;
        const qsizetype end = std::min<qsizetype>((i + 1) * group, source.size());
        for (qsizetype j = i * group; j < end; ++j)
            peak = std::max(peak, source[j]);
        double& m = m_mags[size_t(i)];
        const double g = m < peak ? up : down;
        m += (peak - m) * (1 - g);
    }
    return m_mags;
}

} // namespace MirlPlayer
