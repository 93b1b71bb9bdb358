#pragma once

#include "core/Clock.h"
#include "panel/logic/NotchLayout.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <array>

namespace MirlPlayer {

// The pill's shape as drawn: follows the targets that NotchLayout publishes, each move with the
// spring it was written with, so the views bind to values that are already animated. A move
// that replaces a running one keeps its speed. Runs a frame timer only while something moves.
class PillMotion : public QObject {
    Q_OBJECT
    Q_PROPERTY(double centerX READ centerX NOTIFY changed)
    Q_PROPERTY(double top READ top NOTIFY changed)
    Q_PROPERTY(double width READ width NOTIFY changed)
    Q_PROPERTY(double height READ height NOTIFY changed)
    Q_PROPERTY(bool moving READ moving NOTIFY movingChanged)
public:
    explicit PillMotion(NotchLayout& layout, Clock& clock = Clock::system(),
                        QObject* parent = nullptr);

    double centerX() const { return m_value[0]; }
    double top() const { return m_value[1]; }
    double width() const { return m_value[2]; }
    double height() const { return m_value[3]; }
    bool moving() const { return m_timer.isActive(); }

    // Recomputes the drawn values for the clock's time; the frame timer calls it.
    void advance();

Q_SIGNALS:
    void changed();
    void movingChanged();

private:
    void retarget();
    std::array<double, 4> targets() const;

    QPointer<NotchLayout> m_layout;
    Clock& m_clock;
    QTimer m_timer;
    std::array<double, 4> m_from{};
    std::array<double, 4> m_to{};
    std::array<double, 4> m_value{};
    std::array<double, 4> m_velocity{}; // taken over from the motion this one replaced
    Spring m_spring;
    double m_start = 0;
};

} // namespace MirlPlayer
