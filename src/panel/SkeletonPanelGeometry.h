#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace MirlPlayer {

// Where the first, simple panel draws and what it reacts to, in coordinates of the panel window
// (top-left origin; the window spans the screen's width from its top edge). A screen without a
// notch is laid out as if a 220 x 32 camera housing sat in the middle of its top edge.
struct SkeletonPanelGeometry {
    static constexpr QSizeF notchSize{220, 32};
    static constexpr double gap = 6;
    static constexpr QSizeF restingPill{66, 24};
    static constexpr QSizeF card{248, 336};
    static constexpr double tallestCard = 460;
    static constexpr double triggerMargin = 14; // around the resting pill
    static constexpr double holdMargin = 12;    // around the open card, and up to the screen edge

    double screenWidth = 0;

    double windowHeight() const { return notchSize.height() + gap + tallestCard; }
    double pillTop() const { return notchSize.height() + gap; }
    double pillCenterX() const { return screenWidth / 2; }
    QRectF pillRect() const;
    QRectF cardRect() const;
    // Entering this opens the card.
    QRectF triggerRect() const;
    // Leaving this closes it; it runs up past the top of the screen so that a pointer travelling
    // from the card to the top edge keeps it open.
    QRectF holdRect() const;
    // The part of the window that takes clicks: the pill, or the card while it is open.
    QRectF hitRect(bool expanded) const { return expanded ? cardRect() : pillRect(); }

    // One pointer reading: whether the card is open after it.
    bool nextExpanded(bool expanded, const QPointF& pointer) const;
};

} // namespace MirlPlayer
