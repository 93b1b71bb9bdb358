#pragma once

#include "core/Clock.h"

#include <QObject>
#include <QTimer>
#include <functional>

namespace MirlPlayer {

// A one-shot or repeating timer whose due time is read from a Clock. A QTimer wakes it in the
// running program; tests move a ManualClock and call poll(), so timing rules are checked without
// sleeping. A repeating timer keeps its period from the due time, not from the late wake-up.
class CaptureTimer : public QObject {
    Q_OBJECT
public:
    CaptureTimer(Clock& clock, std::function<void()> action, QObject* parent = nullptr);

    void start(double interval, bool repeating);
    void stop();
    bool isActive() const { return m_active; }
    double dueAt() const { return m_due; }
    // Fires once if due. Returns whether it fired.
    bool poll();

private:
    void arm();

    Clock& m_clock;
    std::function<void()> m_action;
    QTimer m_timer;
    double m_interval = 0;
    double m_due = 0;
    bool m_repeating = false;
    bool m_active = false;
};

} // namespace MirlPlayer
