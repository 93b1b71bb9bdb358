#include "panel/logic/PointerGuard.h"

#include <QLineF>

namespace MirlPlayer {

static double distance(QPointF a, QPointF b) {
    return QLineF(a, b).length();
}

PointerGuard& PointerGuard::shared() {
    static PointerGuard guard;
    return guard;
}

PointerGuard::PointerGuard() {
    m_timer.setInterval(100);
    QObject::connect(&m_timer, &QTimer::timeout, [this] { check(); });
}

void PointerGuard::arm(QPointF pointer) {
    m_anchor = pointer;
    m_timer.start(); // restarting replaces the previous check
}

void PointerGuard::check() {
    if (m_anchor && m_source && distance(m_source(), *m_anchor) <= intentTravel)
        return;
    clear();
}

bool PointerGuard::passes(QPointF pointer) {
    if (!m_anchor)
        return true;
    if (distance(pointer, *m_anchor) > intentTravel) {
        clear();
        return true;
    }
    return false;
}

void PointerGuard::clear() {
    m_anchor.reset();
    m_timer.stop();
}

bool HoverIntent::hoverMayStart(PointerGuard& guard, double now, QPointF pointer, bool fromMusic,
                                bool workRunning) {
    if (!guard.passes(pointer))
        return false;
    if (waitingForExit) {
        if (now - appearedAt >= 0.8 &&
            distance(pointer, appearancePointer) >= PointerGuard::exitTravel)
            waitingForExit = false;
        else
            return false;
    }
    if (fromMusic || workRunning)
        return false;
    return true;
}

} // namespace MirlPlayer
