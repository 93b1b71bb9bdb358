#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QWindow;

namespace MirlPlayer {

// Fades a window's opacity linearly, stepped by a plain timer at the display's rate. The opacity
// is the X server's and the compositor's business: a QPropertyAnimation would start Qt Quick's
// animation driver, which draws the whole scene on every frame of the fade though nothing in it
// moves, for the 1.2 s of the idle dimming.
class WindowFade : public QObject {
public:
    explicit WindowFade(QWindow* window, QObject* parent = nullptr);

    // From the window's opacity now to `alpha` in `seconds`; replaces a fade under way.
    void start(double alpha, double seconds);

private:
    void step();

    QPointer<QWindow> m_window;
    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_from = 1, m_to = 1, m_ms = 0;
};

} // namespace MirlPlayer
