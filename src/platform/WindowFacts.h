#pragma once

#include <QList>
#include <QRectF>
#include <QString>
#include <optional>

namespace MirlPlayer {

// The bounds of a listed window, top-left origin. Each coordinate may be missing: a reader
// decides what a gap means (skip the window, or take a default).
struct WindowBounds {
    std::optional<double> x, y, width, height;

    // The rectangle, only when all four values are present.
    std::optional<QRectF> rect() const {
        if (!x || !y || !width || !height)
            return std::nullopt;
        return QRectF(*x, *y, *width, *height);
    }
    bool operator==(const WindowBounds&) const = default;
};

// One on-screen window as the placement heuristics read it. A field the platform could not
// supply stays empty.
//
// Layers follow one scale on every platform: 0 ordinary windows, 18 with owner "Dock" a
// desktop overview covering the display, 20 and above floating things that stand over the
// menu bar (docks, notifications, popup menus, tooltips), 25 the menu bar or a top panel.
struct WindowRecord {
    std::optional<int> layer;
    std::optional<qint64> pid;
    std::optional<QString> owner;
    std::optional<double> alpha;
    std::optional<WindowBounds> bounds;

    bool operator==(const WindowRecord&) const = default;
};

using WindowList = QList<WindowRecord>;

// The seam to the window server's list of on-screen windows (desktop elements excluded), in
// stacking order from the back to the front.
class WindowFacts {
public:
    virtual ~WindowFacts() = default;

    // The list, or nothing when the window server could not be asked.
    virtual std::optional<WindowList> onScreenWindows() = 0;
    // This process's own identifier, so its windows can be left out.
    virtual qint64 ownPid() const = 0;
};

} // namespace MirlPlayer
