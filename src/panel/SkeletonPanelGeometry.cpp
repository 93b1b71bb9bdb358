#include "panel/SkeletonPanelGeometry.h"

namespace MirlPlayer {

namespace {
QRectF centredAt(double centerX, double top, const QSizeF& size) {
    return {centerX - size.width() / 2, top, size.width(), size.height()};
}
} // namespace

QRectF SkeletonPanelGeometry::pillRect() const {
    return centredAt(pillCenterX(), pillTop(), restingPill);
}

QRectF SkeletonPanelGeometry::cardRect() const {
    return centredAt(pillCenterX(), pillTop(), card);
}

QRectF SkeletonPanelGeometry::triggerRect() const {
    return pillRect().adjusted(-triggerMargin, -triggerMargin, triggerMargin, triggerMargin);
}

QRectF SkeletonPanelGeometry::holdRect() const {
    const QRectF c = cardRect();
    // From 12 above the screen's top edge down to 12 below the card.
    return QRectF(QPointF(c.left() - holdMargin, -holdMargin),
                  QPointF(c.right() + holdMargin, c.bottom() + holdMargin));
}

bool SkeletonPanelGeometry::nextExpanded(bool expanded, const QPointF& pointer) const {
    return expanded ? holdRect().contains(pointer) : triggerRect().contains(pointer);
}

} // namespace MirlPlayer
