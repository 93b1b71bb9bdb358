#pragma once

#include <QtGlobal>

namespace MirlPlayer {

// Every model that reads time takes a Clock, so that timing rules can be tested without sleeping.
// Times are seconds as doubles: `now()` is monotonic (for intervals and deadlines), `wallNow()`
// is seconds since the Unix epoch (for stamps that must survive a restart).
class Clock {
public:
    virtual ~Clock() = default;
    virtual double now() const = 0;
    virtual double wallNow() const = 0;

    // A moment before anything that can happen: "seconds since" it is huge but finite.
    static constexpr double distantPast = -1.0e11;

    // The process-wide real clock.
    static Clock& system();
};

class SystemClock final : public Clock {
public:
    SystemClock();
    double now() const override;
    double wallNow() const override;

private:
    qint64 m_originNs;
};

// A clock that moves only when told to. Wall time follows monotonic time from a fixed base.
class ManualClock final : public Clock {
public:
    explicit ManualClock(double start = 1000.0, double wallBase = 1.7e9)
        : m_now(start)
        , m_wallBase(wallBase - start) {}
    double now() const override { return m_now; }
    double wallNow() const override { return m_wallBase + m_now; }
    void set(double t) { m_now = t; }
    void advance(double seconds) { m_now += seconds; }

private:
    double m_now;
    double m_wallBase;
};

} // namespace MirlPlayer
