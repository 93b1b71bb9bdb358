#include "panel/logic/NotchLayout.h"

namespace MirlPlayer {

QString stageName(Stage stage) {
    switch (stage) {
    case Stage::rest:
        return QStringLiteral("rest");
    case Stage::peek:
        return QStringLiteral("peek");
    case Stage::open:
        return QStringLiteral("open");
    }
    return {};
}

NotchLayout::NotchLayout(QObject* parent)
    : QObject(parent) {}

void NotchLayout::setNotchSize(QSizeF size) {
    if (m_notchSize == size)
        return;
    m_notchSize = size;
    Q_EMIT notchSizeChanged();
}

void NotchLayout::setLibraryOpen(bool open) {
    if (m_libraryOpen == open)
        return;
    m_libraryOpen = open;
    Q_EMIT libraryOpenChanged(open);
}

void NotchLayout::setMotion(std::optional<Spring> motion) {
    m_motion = motion;
}

void NotchLayout::setPlacement(double centerX, double top, bool expanded, QSizeF size,
                               std::optional<Spring> motion) {
    // The motion goes first so that views reacting to the values already see how to move.
    setMotion(motion);
    if (m_pillCenterX != centerX) {
        m_pillCenterX = centerX;
        Q_EMIT pillCenterXChanged();
    }
    if (m_pillTop != top) {
        m_pillTop = top;
        Q_EMIT pillTopChanged();
    }
    if (m_pillSize != size) {
        m_pillSize = size;
        Q_EMIT pillSizeChanged();
    }
    if (m_expanded != expanded) {
        m_expanded = expanded;
        Q_EMIT expandedChanged(expanded);
    }
}

} // namespace MirlPlayer
