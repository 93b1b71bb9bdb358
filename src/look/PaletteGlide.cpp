#include "look/PaletteGlide.h"

#include "core/Clock.h"
#include "look/Ramp.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace MirlPlayer {

namespace {

// A palette of n entries: the last colour repeated, so that palettes of different lengths blend
// entry by entry.
Palette padded(const Palette& p, qsizetype n) {
    Palette out = p;
    while (out.size() < n)
        out.append(out.last());
    return out;
}

} // namespace

PaletteGlide::PaletteGlide(Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock) {
    // A step each display frame.
    m_timer.setInterval(std::chrono::milliseconds(16));
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PaletteGlide::step);
}

void PaletteGlide::glideTo(const Palette& from, const Palette& target) {
    const qsizetype n = std::max(from.size(), target.size());
    m_from = padded(from, n);
    m_to = padded(target, n);
    m_target = target;
    m_start = m_clock.now();
    m_timer.start();
}

bool PaletteGlide::jumpTo(const Palette& target) {
    stop();
    const bool changed = m_palette != target;
    m_palette = target;
    return changed;
}

void PaletteGlide::stop() {
    m_timer.stop();
    m_from.clear();
    m_to.clear();
    m_target.clear();
}

void PaletteGlide::step() {
    if (m_target.isEmpty()) {
        m_timer.stop();
        return;
    }
    const double elapsed = m_clock.now() - m_start;
    // The tolerance keeps clock rounding from costing the glide one extra frame.
    if (elapsed >= duration - 1e-9) {
        m_palette = m_target;
        stop();
        Q_EMIT settled();
        return;
    }
    const double e = smoothstep(std::clamp(elapsed / duration, 0.0, 1.0));
    Palette mixed;
    mixed.reserve(m_from.size());
    for (qsizetype i = 0; i < m_from.size(); ++i)
        mixed.append(blend(m_from[i], m_to[i], e));
    m_palette = mixed;
    Q_EMIT stepped();
}

HSB PaletteGlide::rampAt(double t) const {
    if (m_rampSource != *m_palette) {
        m_ramp = makeRamp(*m_palette, rampSize);
        m_rampSource = *m_palette;
    }
    return m_ramp[std::lround(std::clamp(t, 0.0, 1.0) * (rampSize - 1))];
}

} // namespace MirlPlayer
