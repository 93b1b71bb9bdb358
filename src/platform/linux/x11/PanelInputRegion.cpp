#include "platform/linux/x11/PanelInputRegion.h"

namespace MirlPlayer {

QRectF PanelInputRegion::inputRect() const {
    const QRectF hit = ignoresMouse ? QRectF() : hitRect;
    if (!watchesHover || hoverRect.isEmpty())
        return hit;
    return hit.isEmpty() ? hoverRect : hit.united(hoverRect);
}

QRectF PanelInputRegion::windowRect(const QRectF& drawn) const {
    if (drawn.isEmpty() || !watchesHover || hoverRect.isEmpty())
        return drawn;
    return drawn.united(hoverRect);
}

} // namespace MirlPlayer
