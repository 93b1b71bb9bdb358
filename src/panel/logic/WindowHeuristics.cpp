#include "panel/logic/WindowHeuristics.h"

#include <QHash>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>

namespace MirlPlayer::WindowHeuristics {

namespace {

QRectF grown(const QRectF& r, double d) {
    return r.adjusted(-d, -d, d, d);
}

bool alphaVisible(const WindowRecord& w) {
    return !w.alpha || *w.alpha > 0;
}

std::optional<QRectF> boundsRect(const WindowRecord& w) {
    return w.bounds ? w.bounds->rect() : std::nullopt;
}

} // namespace

bool overviewVisible(const WindowList& windows, const QRectF& displayRect) {
    if (displayRect.isEmpty())
        return false;
    for (const auto& w : windows) {
        if (w.owner != QLatin1String("Dock") || w.layer != 18 || !alphaVisible(w))
            continue;
        const auto r = boundsRect(w);
        if (r && grown(*r, 2).contains(displayRect))
            return true;
    }
    return false;
}

bool menuBarHidden(const WindowList& windows, const QRectF& displayRect, qint64 ownPid) {
    if (displayRect.isEmpty())
        return false;
    bool sawDockCover = false;
    bool sawStatusBar = false;
    QHash<qint64, QRectF> covered;
    QList<qint64> order;

    for (const auto& w : windows) {
        if (!w.layer || !w.pid || *w.pid == ownPid || !alphaVisible(w))
            continue;
        const auto r = boundsRect(w);
        if (!r || r->width() <= 0 || r->height() <= 0 || !r->intersects(displayRect))
            continue;
        const int layer = *w.layer;
        const QString owner = w.owner.value_or(QString());
        if (w.owner && owner == QLatin1String("Dock") && layer == 20) {
            if (grown(*r, 2).contains(displayRect))
                sawDockCover = true;
            continue;
        }
        if (layer == 25) {
            const QRectF inter = r->intersected(displayRect);
            if (std::abs(r->y() - displayRect.y()) <= 2 && inter.width() > 2)
                sawStatusBar = true;
            continue;
        }
        if (layer >= 0 && layer <= 19 && w.owner && owner != QLatin1String("Dock") &&
            owner != QLatin1String("Window Server")) {
            const QRectF inter = r->intersected(displayRect);
            auto it = covered.find(*w.pid);
            if (it == covered.end()) {
                covered.insert(*w.pid, inter);
                order.append(*w.pid);
            } else {
                *it = it->united(inter);
            }
        }
    }
    if (sawDockCover || sawStatusBar)
        return false;
    const double slack = displayRect.height() * 0.06 + 2;
    const double dLeft = displayRect.x();
    const double dRight = displayRect.x() + displayRect.width();
    const double dTop = displayRect.y();
    const double dBottom = displayRect.y() + displayRect.height();
    for (qint64 pid : order) {
        const QRectF& u = covered[pid];
        if (u.x() <= dLeft + 2 && u.x() + u.width() >= dRight - 2 && u.y() <= dTop + slack &&
            u.y() + u.height() >= dBottom - 2)
            return true;
    }
    return false;
}

std::optional<Blocker> findBlocker(const WindowList& windows, const QRectF& displayRect,
                                   double pillLeft, double pillRight, double screenRight,
                                   double screenWidth, qint64 ownPid) {
    const double maxWidth = screenWidth * 0.55;
    bool found = false;
    double leftEdge = std::numeric_limits<double>::max();
    QString owner = QStringLiteral("Notification Centre");

    for (const auto& w : windows) {
        if (!w.layer || *w.layer < 20 || !w.bounds)
            continue;
        if (w.pid && *w.pid == ownPid)
            continue;
        const double x = w.bounds->x.value_or(0);
        // A missing Y must never count as near the top.
        const double y = w.bounds->y.value_or(999);
        const double width = w.bounds->width.value_or(0);
        const double height = w.bounds->height.value_or(0);
        const QString name = w.owner.value_or(QString());
        const bool overlaps = pillLeft < x + width && x < pillRight;

        if ((name == QLatin1String("Notification Centre") ||
             name == QLatin1String("NotificationCenter")) &&
            height >= 200) {
            // The notification panel slides in at the right edge whatever its reported bounds.
            const double edge = screenRight - 400;
            if (edge < pillRight) {
                found = true;
                leftEdge = std::min(leftEdge, edge);
            }
            continue;
        }
        if (height >= 120 && y <= displayRect.y() + 50 && width >= 90 && width <= maxWidth &&
            overlaps) {
            found = true;
            leftEdge = std::min(leftEdge, x);
            owner = name;
        }
    }
    if (!found)
        return std::nullopt;
    return Blocker{leftEdge, owner};
}

QString windowDigest(const std::optional<WindowList>& windows) {
    if (!windows)
        return QStringLiteral("nil");
    struct W {
        QString owner;
        int layer, x, y, w, h;
    };
    QList<W> high;
    QList<W> base;
    for (const auto& r : *windows) {
        const WindowBounds b = r.bounds.value_or(WindowBounds{});
        W w{r.owner.value_or(QStringLiteral("?")),
            r.layer.value_or(0),
            int(b.x.value_or(0)),
            int(b.y.value_or(0)),
            int(b.width.value_or(0)),
            int(b.height.value_or(0))};
        if (w.layer >= 20)
            high.append(w);
        else if (w.layer == 0)
            base.append(w);
    }
    std::stable_sort(high.begin(), high.end(),
                     [](const W& a, const W& b) { return a.layer < b.layer; });
    std::stable_sort(base.begin(), base.end(), [](const W& a, const W& b) { return a.h > b.h; });
    if (base.size() > 3)
        base.resize(3);
    QStringList parts;
    for (const auto& list : {high, base}) {
        for (const auto& w : list) {
            parts << QStringLiteral("[%1 L%2 %3,%4 %5x%6]")
                         .arg(w.owner)
                         .arg(w.layer)
                         .arg(w.x)
                         .arg(w.y)
                         .arg(w.w)
                         .arg(w.h);
        }
    }
    return parts.join(QLatin1Char(' '));
}

} // namespace MirlPlayer::WindowHeuristics
