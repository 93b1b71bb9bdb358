#pragma once

#include "core/Clock.h"

#include <QObject>
#include <QTimer>
#include <functional>

namespace MirlPlayer {

// Runs an action once after `interval` seconds have passed without a new trigger().
// A QTimer drives it; tests advance a ManualClock and call poll().
class Debouncer : public QObject {
    Q_OBJECT
public:
    Debouncer(double interval, std::function<void()> action, Clock& clock = Clock::system(),
              QObject* parent = nullptr);

    void trigger();
    void cancel();
    bool pending() const { return m_pending; }
    // Runs the action if the quiet interval has passed. Returns whether it ran.
    bool poll();

private:
    double m_interval;
    std::function<void()> m_action;
    Clock& m_clock;
    QTimer m_timer;
    double m_deadline = 0;
    bool m_pending = false;
};

} // namespace MirlPlayer
