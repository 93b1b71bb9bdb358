#pragma once

#include "panel/logic/NotchLayout.h"
#include "platform/ScreenInfo.h"

#include <QPointF>
#include <QRectF>
#include <limits>
#include <optional>

// Pure geometry of the panel. Rectangles are screen points, bottom-left origin, stored in a
// QRectF as (left, bottom, width, height), so QRectF's "top" is the bottom edge here: use the
// helpers below, never QRectF::top/bottom, when the direction matters.
namespace MirlPlayer::PanelGeometry {

inline constexpr double noLeftEdge = std::numeric_limits<double>::max();

// Everything a geometry question depends on besides the stage.
struct Context {
    ScreenDescription screen;
    QSizeF notchSize = NotchLayout::fallbackNotchSize;
    PillPosition position = PillPosition::notch;
    bool showVisualizer = true;
    bool libraryOpen = false;
    bool fullscreenActive = false;
};

struct Placement {
    double centerX = 0; // from the panel's (= the screen's) left edge
    double top = 0;     // down from the screen's top edge
    bool expanded = false;
    bool operator==(const Placement&) const = default;
};

inline double topEdge(const QRectF& r) {
    return r.y() + r.height();
}
inline double rightEdge(const QRectF& r) {
    return r.x() + r.width();
}
// Half-open like the window server's own point test: the far edges are outside.
inline bool containsPoint(const QRectF& r, QPointF p) {
    return p.x() >= r.x() && p.x() < r.x() + r.width() && p.y() >= r.y() &&
           p.y() < r.y() + r.height();
}

// The first screen with a camera housing, else the main screen, else none.
std::optional<ScreenDescription> targetScreen(const QList<ScreenDescription>& screens,
                                              const std::optional<ScreenDescription>& main);
QSizeF measureNotch(const ScreenDescription& screen);
QSizeF expandedSize(bool libraryOpen, bool showVisualizer);
// Full screen width, tall enough for the tallest card; independent of the stage.
QRectF panelFrame(const ScreenDescription& screen, QSizeF notchSize);
Placement pillPlacement(Stage stage, const Context& context);
// The size the pill has for a placement.
QSizeF sizeFor(const Placement& placement, const Context& context);
// Moves the centre left so the pill keeps clear of something standing at `panelLeftEdge`.
double dodgeCorrectedCenterX(const Placement& placement, const Context& context,
                             double panelLeftEdge);
// The pill's rectangle for a placement and size.
QRectF rectFor(const Context& context, const Placement& placement, QSizeF size);

QRectF pillRect(const Context& context);
QRectF triggerRect(const Context& context);
QRectF holdRect(const Context& context);
QRectF hitRegion(const Context& context);
// Where the stage machine reads the pointer at a stage: the trigger at rest, else the hold
// rectangle (which holds the trigger).
QRectF hoverRect(Stage stage, const Context& context);
// A screen rectangle in a window's own coordinates (top-left origin at the frame's top left).
QRectF inWindow(const QRectF& frame, const QRectF& rect);

// The screen's rectangle as window lists give theirs: top-left origin at the top left of the
// whole desktop.
QRectF displayRect(const ScreenDescription& screen, const QList<ScreenDescription>& screens);

} // namespace MirlPlayer::PanelGeometry
