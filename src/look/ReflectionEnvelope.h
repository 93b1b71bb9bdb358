#pragma once

#include <QList>
#include <vector>

namespace MirlPlayer {

// The smoothed light of one reflection layer: the band levels pooled into `count` magnitudes that
// rise with the attack and fall with the release. Made once per layer and kept across redraws;
// touched only while that layer draws.
class ReflectionEnvelope {
public:
    // Pools `source` into `count` magnitudes at time `now` (seconds) and returns them. A change of
    // `count` starts over from zero; a pause longer than 0.1 s counts as 0.1 s, so a stalled view
    // never jumps. The top of the spectrum beyond the last whole pool makes no light.
    const std::vector<double>& update(const QList<double>& source, int count, double attack,
                                      double release, double now);

    const std::vector<double>& mags() const { return m_mags; }
    double last() const { return m_last; }

private:
    std::vector<double> m_mags;
    double m_last = 0;
};

} // namespace MirlPlayer
