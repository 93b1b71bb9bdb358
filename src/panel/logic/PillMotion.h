#pragma once

#include "core/Clock.h"
#include "panel/logic/NotchLayout.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <array>

namespace MirlPlayer {

// The pill's shape as drawn: follows the targets that NotchLayout publishes, each move with the
// spring it was written with, so the views bind to values that are already animated. A move that
// interrupts another starts with the speed the shape has, so the shape turns without a kink.
// Runs a frame timer only while something moves.
class PillMotion : public QObject {
    Q_OBJECT
    Q_PROPERTY(double centerX READ centerX NOTIFY changed)
    Q_PROPERTY(double top READ top NOTIFY changed)
    Q_PROPERTY(double width READ width NOTIFY changed)
    Q_PROPERTY(double height READ height NOTIFY changed)
    Q_PROPERTY(double cornerRadius READ cornerRadius NOTIFY changed)
    Q_PROPERTY(bool moving READ moving NOTIFY movingChanged)
public:
    explicit PillMotion(NotchLayout& layout, Clock& clock = Clock::system(),
                        QObject* parent = nullptr);

    double centerX() const { return m_value[0]; }
    double top() const { return m_value[1]; }
    double width() const { return m_value[2]; }
    double height() const { return m_value[3]; }
    // 30 for the open card, 12 for the resting pill, gliding with the size.
    double cornerRadius() const { return m_value[4]; }
    static constexpr double openRadius = 30;
    static constexpr double restingRadius = 12;
    bool moving() const { return m_timer.isActive(); }

    // Recomputes the drawn values for the clock's time; the frame timer calls it.
    void advance();

Q_SIGNALS:
    void changed();
    void movingChanged();

private:
    using Values = std::array<double, 5>;
    void retarget();
    Values targets() const;

    QPointer<NotchLayout> m_layout;
    Clock& m_clock;
    QTimer m_timer;
    std::array<SpringAxis, 5> m_axes;
    Values m_to{};
    Values m_value{};
};

} // namespace MirlPlayer
