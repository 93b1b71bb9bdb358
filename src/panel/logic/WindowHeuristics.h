#pragma once

#include "platform/WindowFacts.h"

#include <QRectF>
#include <optional>

// The three questions the panel asks of the window list, over window records with a top-left
// origin. Their constants are tuned to how the system's own overview, menu bar, menus and
// panels look in that list.
namespace MirlPlayer::WindowHeuristics {

// A desktop overview (all windows shown at once) is on screen.
bool overviewVisible(const WindowList& windows, const QRectF& displayRect);

// A full-screen application covers the display and the menu bar is hidden.
bool menuBarHidden(const WindowList& windows, const QRectF& displayRect, qint64 ownPid);

struct Blocker {
    double leftEdge = 0;
    QString owner;
    bool operator==(const Blocker&) const = default;
};
// A menu or panel stands where the resting pill is. `pillLeft`/`pillRight` are the resting pill's
// edges, `screenRight` the screen's right edge and `screenWidth` its width, all in points.
std::optional<Blocker> findBlocker(const WindowList& windows, const QRectF& displayRect,
                                   double pillLeft, double pillRight, double screenRight,
                                   double screenWidth, qint64 ownPid);

// One line describing the windows that matter for placement, for the debug log.
QString windowDigest(const std::optional<WindowList>& windows);

} // namespace MirlPlayer::WindowHeuristics
