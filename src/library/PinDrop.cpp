#include "library/PinDrop.h"

namespace MirlPlayer {

std::optional<QString> pinDropTarget(QPointF pointer, const QRectF& sidebar,
                                     const QStringList& pins, const QString& dragged,
                                     const QHash<QString, QRectF>& frames) {
    const QRectF grown = sidebar.adjusted(-pinDropSlack, 0, pinDropSlack, 0);
    // contains() leaves out the right and bottom edges; a pointer exactly there still counts.
    if (pointer.x() < grown.left() || pointer.x() > grown.right() || pointer.y() < grown.top() ||
        pointer.y() > grown.bottom())
        return std::nullopt;
    for (const QString& id : pins) {
        if (id == dragged)
            continue;
        const auto frame = frames.constFind(id);
        if (frame == frames.cend() || frame->center().y() > pointer.y())
            return id;
    }
    return pinEndMarker;
}

} // namespace MirlPlayer
