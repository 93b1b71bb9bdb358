#pragma once

#include "platform/WindowFacts.h"

#include <QList>
#include <QRect>
#include <vector>

namespace MirlPlayer {

// What the X server and the window manager say of one shown top-level window. Rectangles are
// in pixels relative to the root window's top left.
struct X11Window {
    // `menu` covers popup and dropdown menus, combo lists, tooltips, drag icons and unmanaged
    // windows of no type.
    enum class Kind { normal, desktop, dock, notification, menu };
    QRect geometry; // outer bounds, border included
    Kind kind = Kind::normal;
    bool overrideRedirect = false;
    bool hidden = false;     // _NET_WM_STATE_HIDDEN: minimised
    bool fullScreen = false; // _NET_WM_STATE_FULLSCREEN
    std::optional<QString> owner;
    std::optional<qint64> pid;
    std::optional<double> alpha;
    // _NET_WM_STRUT(_PARTIAL): rows reserved from the root's top, over the columns in `strutSpan`.
    int strutTop = 0;
    std::pair<int, int> strutSpan{0, 0};
};

// The desktop around the windows, in root pixels.
struct X11Desktop {
    QRect root;
    QList<QRect> screens;
    std::optional<QRect> workArea; // _NET_WORKAREA of the current desktop
    // The window manager marks full-screen windows (_NET_WM_STATE_FULLSCREEN in _NET_SUPPORTED).
    bool fullScreenKnown = false;
    QString managerName; // the window manager's _NET_WM_NAME
    bool overview = false;
    double pixelRatio = 1;
};

// The records the placement heuristics read, for windows in stacking order (bottom first):
// - ordinary and dialog windows: layer 0; notifications 23; menus, tooltips and unmanaged
//   windows of no type 101; desktop and minimised windows are left out;
// - a dock along the top edge of its screen: 25, the menu bar's place; other docks 20;
// - where the window manager marks full-screen windows, a screen is full-screen exactly when its
//   topmost ordinary window carries the mark. On such a screen the docks beneath that window are
//   covered and left out; on every other screen the top bar stands: where no dock window stands
//   there (GNOME's bar is drawn by the window manager itself) a record of the manager's at layer
//   25 spans the rows the desktop reserves at the top (struts, _NET_WORKAREA), one at least. So
//   a maximised window is never taken for a full-screen one;
// - a desktop overview: an owner "Dock" record at layer 18 covering the root.
// Bounds are in points (pixels over `pixelRatio`), relative to the root's top left.
WindowList windowRecords(const std::vector<X11Window>& stack, const X11Desktop& desktop);

} // namespace MirlPlayer
