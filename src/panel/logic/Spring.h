#pragma once

namespace MirlPlayer {

// The one description of motion the panel uses: a response in seconds (the period of the
// undamped oscillation), a damping fraction (1 settles without overshoot, below 1 bounces) and a
// blend duration over which a new motion takes over the velocity of one still running.
// Views follow it through `progress`, so every animated value of the panel moves alike.
struct Spring {
    double response = 0.42;
    double dampingFraction = 1.0;
    double blend = 0.0;

    // Fraction of the way from start to target after `t` seconds, for a start at rest.
    // Undamped-to-critically-damped step response of a unit mass spring; exactly 1 once settled.
    double progress(double t) const;
    // Rate of `progress` at `t`, per second.
    double progressRate(double t) const;
    // Displacement after `t` seconds of a spring that starts at its target moving at one unit
    // per second, and its rate: a motion that replaces a running one adds this, scaled by the
    // velocity it took over, so the drawn value keeps its speed. 0 once settled.
    double carry(double t) const;
    double carryRate(double t) const;
    // Seconds until the remaining distance stays below 0.1 % of the way.
    double settlingTime() const;

    bool operator==(const Spring&) const = default;
};

} // namespace MirlPlayer
