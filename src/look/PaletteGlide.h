#pragma once

#include "look/HSB.h"

#include <QObject>
#include <QTimer>
#include <optional>

namespace MirlPlayer {

class Clock;

// The cover colours as drawn: a new palette is reached by a glide of 0.9 s, blended entry by
// entry with a smoothstep, with a frame timer that runs only during the glide. Also the colour
// ramp of the palette as drawn, rebuilt only when a colour is asked for after it moved.
class PaletteGlide : public QObject {
    Q_OBJECT
public:
    static constexpr double duration = 0.9;
    // Entries of the ramp from the lows to the highs.
    static constexpr int rampSize = 96;

    explicit PaletteGlide(Clock& clock, QObject* parent = nullptr);

    const std::optional<Palette>& palette() const { return m_palette; }
    bool isGliding() const { return m_timer.isActive(); }
    // Glides from `from` (the palette as the viewer sees it now) to `target`.
    void glideTo(const Palette& from, const Palette& target);
    // Shows `target` at once, ending any glide. Answers whether the palette changed.
    bool jumpTo(const Palette& target);
    // One step at the clock's present time; the frame timer calls it.
    void step();
    // The ramp colour at t (0 the lows, 1 the highs, clamped) of a palette of two or more.
    HSB rampAt(double t) const;

Q_SIGNALS:
    void stepped(); // each step before the end
    void settled(); // the glide reached its target

private:
    void stop();

    Clock& m_clock;
    QTimer m_timer;
    std::optional<Palette> m_palette;
    double m_start = 0;
    Palette m_from;
    Palette m_to; // padded to the length of m_from
    Palette m_target;
    mutable Palette m_ramp;
    mutable Palette m_rampSource;
};

} // namespace MirlPlayer
