#pragma once

#include <QHash>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <optional>

namespace MirlPlayer {

// Where a pin dragged in the sidebar would land. No id can begin with NUL, so this marker for
// "after the last pin" never collides with a pin.
inline const QString pinEndMarker = QStringLiteral("\u0000end");

// The slack beside the sidebar within which a drop still reorders rather than removes.
inline constexpr double pinDropSlack = 8;

// The id of the pin the dragged one would land before, `pinEndMarker` for the end, or none when
// the pointer has left the sidebar (grown by the slack left and right): a drop there removes the
// pin. `pins` are the movable pins in order; `dragged` is left out; a pin without a frame counts
// as infinitely far down.
std::optional<QString> pinDropTarget(QPointF pointer, const QRectF& sidebar,
                                     const QStringList& pins, const QString& dragged,
                                     const QHash<QString, QRectF>& frames);

} // namespace MirlPlayer
