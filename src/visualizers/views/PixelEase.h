#pragma once

#include "core/Clock.h"

#include <QObject>
#include <QTimer>

namespace MirlPlayer {

// A number that eases to each new `target` over `duration` seconds (ease-out, quadratic), seen
// only in whole `step`s (a device pixel) and only when a new target arrives or the ease ends:
// its targets come with the level arrays, whose frames draw the scene anyway, so the ease moves
// on those frames and adds one wake of its own, at its end. An ease that would not move a pixel
// neither wakes the program nor draws a frame, where an animation would tick at the display's
// rate throughout.
class PixelEase : public QObject {
    Q_OBJECT
    Q_PROPERTY(double target READ target WRITE setTarget NOTIFY targetChanged)
    Q_PROPERTY(double value READ value NOTIFY valueChanged)
    Q_PROPERTY(double step READ step WRITE setStep NOTIFY stepChanged)
    Q_PROPERTY(double duration MEMBER m_duration NOTIFY durationChanged)
public:
    explicit PixelEase(QObject* parent = nullptr);

    double target() const { return m_to; }
    void setTarget(double target);
    double value() const { return m_value; }
    double step() const { return m_step; }
    void setStep(double step);

    // Tests move a ManualClock and call poll(); the timer calls it in the running program.
    void setClock(Clock& clock) { m_clock = &clock; }
    void poll();
    bool moving() const { return m_moving; }
    // When the ease ends (the timer's due time); meaningful while moving.
    double nextChangeAt() const { return m_nextAt; }

Q_SIGNALS:
    void targetChanged();
    void valueChanged();
    void stepChanged();
    void durationChanged();

private:
    double exactAt(double now) const;
    double snapped(double v) const;

    Clock* m_clock = &Clock::system();
    QTimer m_timer;
    double m_from = 0;
    double m_to = 0;
    double m_startedAt = 0;
    double m_nextAt = 0;
    double m_value = 0;
    double m_step = 1;
    double m_duration = 0.1;
    bool m_moving = false;
    bool m_hasValue = false;
};

} // namespace MirlPlayer
