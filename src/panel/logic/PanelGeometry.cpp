#include "panel/logic/PanelGeometry.h"

#include <algorithm>

namespace MirlPlayer::PanelGeometry {

std::optional<ScreenDescription> targetScreen(const QList<ScreenDescription>& screens,
                                              const std::optional<ScreenDescription>& main) {
    for (const auto& s : screens) {
        if (s.safeAreaTop > 0)
            return s;
    }
    return main;
}

QSizeF measureNotch(const ScreenDescription& screen) {
    if (screen.safeAreaTop > 0) {
        const double left = screen.auxiliaryTopLeftArea ? screen.auxiliaryTopLeftArea->width() : 0;
        const double right =
            screen.auxiliaryTopRightArea ? screen.auxiliaryTopRightArea->width() : 0;
        const double width = screen.frame.width() - left - right;
        if (width > 80)
            return {width, screen.safeAreaTop};
    }
    return NotchLayout::fallbackNotchSize;
}

QSizeF expandedSize(bool libraryOpen, bool showVisualizer) {
    if (libraryOpen)
        return NotchLayout::libraryPill;
    return showVisualizer ? NotchLayout::visualizerPill : NotchLayout::artworkPill;
}

QRectF panelFrame(const ScreenDescription& screen, QSizeF notchSize) {
    const double h = notchSize.height() + NotchLayout::gap +
                     std::max(NotchLayout::libraryPill.height(), NotchLayout::artworkPill.height());
    const QRectF& f = screen.frame;
    return {f.x(), topEdge(f) - h, f.width(), h};
}

Placement pillPlacement(Stage stage, const Context& c) {
    const QRectF& f = c.screen.frame;
    const double centre = f.width() / 2;
    const double rightEnd = f.width(); // the screen's right edge, from its left edge
    const double ordinaryTop = c.notchSize.height() + NotchLayout::gap;
    const double collapsedW = NotchLayout::collapsedPill.width();

    if (stage == Stage::rest && c.fullscreenActive) {
        return {rightEnd - NotchLayout::upRightMargin - collapsedW / 2,
                std::max((c.notchSize.height() - NotchLayout::collapsedPill.height()) / 2, 2.0),
                false};
    }
    if (stage != Stage::open) {
        const double x = c.position == PillPosition::right
                             ? rightEnd - NotchLayout::rightMargin - collapsedW / 2
                             : centre;
        return {x, ordinaryTop, false};
    }
    const double w = expandedSize(c.libraryOpen, c.showVisualizer).width();
    const double x =
        c.position == PillPosition::right ? rightEnd - NotchLayout::rightMargin - w / 2 : centre;
    return {x, ordinaryTop, true};
}

QSizeF sizeFor(const Placement& placement, const Context& c) {
    return placement.expanded ? expandedSize(c.libraryOpen, c.showVisualizer)
                              : NotchLayout::collapsedPill;
}

double dodgeCorrectedCenterX(const Placement& placement, const Context& c, double panelLeftEdge) {
    const double w = sizeFor(placement, c).width();
    const double limit = panelLeftEdge - 12 - w / 2 - c.screen.frame.x();
    const double candidate = std::max(std::min(limit, c.screen.frame.width() / 2), w / 2 + 8);
    return std::min(candidate, placement.centerX);
}

QRectF rectFor(const Context& c, const Placement& p, QSizeF size) {
    const QRectF& f = c.screen.frame;
    return {f.x() + p.centerX - size.width() / 2, topEdge(f) - p.top - size.height(), size.width(),
            size.height()};
}

static QRectF grown(const QRectF& r, double dx, double dy) {
    return r.adjusted(-dx, -dy, dx, dy);
}

QRectF pillRect(const Context& c) {
    const QRectF rest = rectFor(c, pillPlacement(Stage::rest, c), NotchLayout::collapsedPill);
    return grown(rest, 120, 110);
}

QRectF triggerRect(const Context& c) {
    const QRectF& f = c.screen.frame;
    if (!c.fullscreenActive) {
        const QRectF rest = rectFor(c, pillPlacement(Stage::rest, c), NotchLayout::collapsedPill);
        return grown(rest, 14, 14);
    }
    const double h = c.notchSize.height() + 8;
    double centreX = 0;
    double w = 0;
    if (c.position == PillPosition::notch) {
        centreX = f.x() + f.width() / 2;
        w = std::max(c.notchSize.width(), 200.0);
    } else {
        centreX =
            rightEdge(f) - NotchLayout::upRightMargin - NotchLayout::collapsedPill.width() / 2;
        w = NotchLayout::collapsedPill.width() + 80;
    }
    return {centreX - w / 2, topEdge(f) - h, w, h};
}

static QRectF cardRect(const Context& c) {
    return rectFor(c, pillPlacement(Stage::open, c), expandedSize(c.libraryOpen, c.showVisualizer));
}

QRectF holdRect(const Context& c) {
    const QRectF card = cardRect(c);
    return {card.x() - 12, card.y() - 12, card.width() + 24,
            topEdge(c.screen.frame) - card.y() + 24};
}

QRectF hitRegion(const Context& c) {
    return grown(cardRect(c), 6, 6);
}

QRectF displayRect(const ScreenDescription& screen, const QList<ScreenDescription>& screens) {
    // Window lists measure down from the top of the whole desktop (the X root window), which is
    // the top of the highest screen, not the primary's: a laptop below a taller monitor starts
    // that monitor's height down.
    double desktopTop = topEdge(screen.frame);
    for (const auto& s : screens)
        desktopTop = std::max(desktopTop, topEdge(s.frame));
    const QRectF& f = screen.frame;
    return {f.x(), desktopTop - topEdge(f), f.width(), f.height()};
}

QRectF hoverRect(Stage stage, const Context& context) {
    return stage == Stage::rest ? triggerRect(context) : holdRect(context);
}

QRectF inWindow(const QRectF& frame, const QRectF& rect) {
    return {rect.x() - frame.x(), topEdge(frame) - topEdge(rect), rect.width(), rect.height()};
}

} // namespace MirlPlayer::PanelGeometry
