#pragma once

namespace MirlPlayer {

// The one description of motion the panel uses: a response in seconds (the period of the
// undamped oscillation), a damping fraction (1 settles without overshoot, below 1 bounces) and a
// blend duration over which a new motion takes over from one still running.
// Views follow it through `progress` or a `SpringAxis`, so every animated value moves alike.
struct Spring {
    double response = 0.42;
    double dampingFraction = 1.0;
    double blend = 0.0;

    // Distance still to go and speed, `t` seconds after a start `displacement` away from the
    // target with `velocity` (both in the value's own units, per second for the speed).
    struct State {
        double displacement = 0;
        double velocity = 0;
    };
    State evolve(double displacement, double velocity, double t) const;

    // Fraction of the way from start to target after `t` seconds, for a start at rest.
    // Undamped-to-critically-damped step response of a unit mass spring; exactly 1 once settled.
    double progress(double t) const;
    // Seconds until the remaining distance stays below 0.1 % of the way.
    double settlingTime() const;

    bool operator==(const Spring&) const = default;
};

// One animated number. A new target takes over the value and the speed the number has at that
// moment, so an interrupted motion turns without a kink; with a blend duration, the previous
// spring's character fades into the new one's over that time.
class SpringAxis {
public:
    explicit SpringAxis(double value = 0)
        : m_origin(value)
        , m_target(value) {}

    // Moves toward `target` with `spring`, from where the number stands at `now`.
    void retarget(double target, const Spring& spring, double now);
    // Stands still at `value` at once.
    void jump(double value);

    double value(double now) const { return state(now).value; }
    double velocity(double now) const { return state(now).velocity; }
    double target() const { return m_target; }
    // True once the number rests on its target (it is then exactly the target).
    bool settled(double now) const;

private:
    struct Sample {
        double value;
        double velocity;
    };
    Sample state(double now) const;

    double m_origin;     // value at the start of the motion
    double m_launch = 0; // velocity at the start of the motion
    double m_target;
    double m_start = 0;
    bool m_moving = false;
    Spring m_spring;
    Spring m_previous; // the spring the motion inherits from during the blend
};

} // namespace MirlPlayer
