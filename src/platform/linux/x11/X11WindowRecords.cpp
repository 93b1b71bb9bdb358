#include "platform/linux/x11/X11WindowRecords.h"

#include <algorithm>
#include <cstdlib>

namespace MirlPlayer {

namespace {

using Kind = X11Window::Kind;

// The screen showing most of a rectangle, or -1 when it lies on none.
int screenOf(const QRect& r, const QList<QRect>& screens) {
    int best = -1;
    qint64 bestArea = 0;
    for (int i = 0; i < screens.size(); ++i) {
        const QRect inter = r.intersected(screens[i]);
        const qint64 area = qint64(inter.width()) * inter.height();
        if (area > bestArea) {
            best = i;
            bestArea = area;
        }
    }
    return best;
}

bool managedOrdinary(const X11Window& w) {
    return w.kind == Kind::normal && !w.overrideRedirect && !w.hidden;
}

bool alongTopOf(const QRect& g, const QRect& screen) {
    return std::abs(g.y() - screen.y()) <= 2 && g.width() > g.height();
}

// The rows the desktop keeps at the top of a screen for its bar.
int reservedTop(const QRect& screen, const std::vector<X11Window>& stack,
                const std::optional<QRect>& workArea) {
    int rows = 0;
    if (workArea && workArea->y() > screen.y() && workArea->y() <= screen.bottom() &&
        workArea->x() <= screen.right() && workArea->right() >= screen.x())
        rows = workArea->y() - screen.y();
    for (const auto& w : stack) {
        // Struts count from the root's top, so only a screen at that top can have one.
        if (w.kind != Kind::dock || w.strutTop <= screen.y() || w.strutSpan.second < screen.x() ||
            w.strutSpan.first > screen.right())
            continue;
        rows = std::max(rows, std::min(w.strutTop, screen.y() + screen.height()) - screen.y());
    }
    return std::clamp(rows, 1, std::max(1, screen.height() / 4));
}

WindowBounds inPoints(const QRect& r, double ratio) {
    return WindowBounds{r.x() / ratio, r.y() / ratio, r.width() / ratio, r.height() / ratio};
}

int layerOf(const X11Window& w, const QList<QRect>& screens) {
    switch (w.kind) {
    case Kind::dock: {
        const int s = screenOf(w.geometry, screens);
        return s >= 0 && alongTopOf(w.geometry, screens[s]) ? 25 : 20;
    }
    case Kind::notification:
        return 23;
    case Kind::menu:
        return 101;
    default:
        return 0;
    }
}

} // namespace

WindowList windowRecords(const std::vector<X11Window>& stack, const X11Desktop& desktop) {
    const QList<QRect>& screens = desktop.screens;
    // Per screen, the stacking index of its full-screen window, or -1.
    QList<int> fullScreenAt(screens.size(), -1);
    if (desktop.fullScreenKnown) {
        QList<bool> decided(screens.size(), false);
        for (int i = int(stack.size()); i-- > 0;) {
            if (!managedOrdinary(stack[i]))
                continue;
            const int s = screenOf(stack[i].geometry, screens);
            if (s < 0 || decided[s])
                continue;
            decided[s] = true;
            if (stack[i].fullScreen)
                fullScreenAt[s] = i;
        }
    }

    WindowList list;
    QList<bool> topBarSeen(screens.size(), false);
    for (int i = 0; i < int(stack.size()); ++i) {
        const X11Window& w = stack[i];
        if (w.kind == Kind::desktop || w.hidden)
            continue;
        const int layer = layerOf(w, screens);
        if (w.kind == Kind::dock) {
            const int s = screenOf(w.geometry, screens);
            if (s >= 0 && i < fullScreenAt[s])
                continue; // covered by the full-screen window: no visible bar
            if (s >= 0 && layer == 25)
                topBarSeen[s] = true;
        }
        WindowRecord r;
        r.layer = layer;
        r.owner = w.owner;
        r.pid = w.pid;
        r.alpha = w.alpha;
        r.bounds = inPoints(w.geometry, desktop.pixelRatio);
        list.append(r);
    }

    if (desktop.fullScreenKnown) {
        for (int s = 0; s < screens.size(); ++s) {
            if (fullScreenAt[s] >= 0 || topBarSeen[s])
                continue;
            const QRect& screen = screens[s];
            WindowRecord bar;
            bar.layer = 25;
            bar.owner = desktop.managerName.isEmpty() ? QStringLiteral("Window Manager")
                                                      : desktop.managerName;
            bar.pid = 0;
            bar.alpha = 1.0;
            bar.bounds = inPoints(QRect(screen.x(), screen.y(), screen.width(),
                                        reservedTop(screen, stack, desktop.workArea)),
                                  desktop.pixelRatio);
            list.append(bar);
        }
    }

    if (desktop.overview) {
        WindowRecord r;
        r.owner = QStringLiteral("Dock");
        r.layer = 18;
        r.pid = 0;
        r.alpha = 1.0;
        r.bounds = inPoints(desktop.root, desktop.pixelRatio);
        list.append(r);
    }
    return list;
}

} // namespace MirlPlayer
