#include "panel/SurfaceGeometry.h"

#include "look/ControlStyle.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

namespace {

QString n(double v) {
    return QString::number(v, 'f', 2);
}

} // namespace

QString SurfaceGeometry::roundedRectPath(double x, double y, double w, double h, double r) {
    r = std::clamp(r, 0.0, std::min(w, h) / 2);
    if (w <= 0 || h <= 0)
        return {};
    return QStringLiteral("M %1 %2 H %3 A %4 %4 0 0 1 %5 %6 V %7 A %4 %4 0 0 1 %3 %8 H %9 "
                          "A %4 %4 0 0 1 %10 %7 V %6 A %4 %4 0 0 1 %1 %2 Z")
        .arg(n(x + r), n(y), n(x + w - r), n(r), n(x + w), n(y + r), n(y + h - r), n(y + h),
             n(x + r))
        .arg(n(x));
}

QString SurfaceGeometry::ringPath(double w, double h, double r, double width) {
    return roundedRectPath(0, 0, w, h, r) + QLatin1Char(' ') +
           roundedRectPath(width, width, w - 2 * width, h - 2 * width, std::max(r - width, 0.0));
}

QString SurfaceGeometry::cutCornerPath(double w, double h, double cut) {
    cut = std::clamp(cut, 0.0, std::min(w, h) / 2);
    return QStringLiteral("M %1 0 H %2 V %3 L %4 %5 H 0 V %1 Z")
        .arg(n(cut), n(w), n(h - cut), n(w - cut), n(h));
}

QPainterPath SurfaceGeometry::symbolShape(const QString& kind, double s) {
    QPainterPath path;
    if (kind == u"pause") {
        path.addRect(s * 0.15, 0, s * 0.25, s);
        path.addRect(s * 0.6, 0, s * 0.25, s);
    } else if (kind == u"play") {
        path.addPolygon(QPolygonF({{s * 0.1, 0}, {s, s / 2}, {s * 0.1, s}}));
        path.closeSubpath();
    } else if (kind == u"next" || kind == u"previous") {
        // A triangle and a bar; "previous" is drawn mirrored.
        path.addPolygon(QPolygonF({{0, 0}, {s * 0.75, s / 2}, {0, s}}));
        path.closeSubpath();
        path.addRect(s * 0.8, 0, s * 0.2, s);
    }
    return path;
}

QString SurfaceGeometry::symbolPath(const QString& kind, double s) {
    if (kind == u"note") {
        // An eighth note: an oval head, a stem and a flag.
        const QString head =
            QStringLiteral("M %1 %2 A %3 %4 0 1 0 %5 %2 A %3 %4 0 1 0 %1 %2 Z ")
                .arg(n(s * 0.14), n(s * 0.78), n(s * 0.18), n(s * 0.14), n(s * 0.50));
        return head + QStringLiteral("M %1 %2 V %3 H %4 Q %5 %6 %7 %8 Q %9 %10 %4 %11 V %2 Z")
                          .arg(n(s * 0.44), n(s * 0.78), n(s * 0.06), n(s * 0.52), n(s * 0.56),
                               n(s * 0.28), n(s * 0.84), n(s * 0.42), n(s * 0.62))
                          .arg(n(s * 0.34), n(s * 0.30));
    }
    // The straight-edged symbols as the painter has them: each figure a polygon.
    QStringList parts;
    const QPainterPath path = symbolShape(kind, s);
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        if (e.isMoveTo() && i > 0)
            parts << QStringLiteral("Z");
        parts << QStringLiteral("%1 %2 %3")
                     .arg(QLatin1Char(e.isMoveTo() ? 'M' : 'L'))
                     .arg(n(e.x), n(e.y));
    }
    if (!parts.isEmpty())
        parts << QStringLiteral("Z");
    return parts.join(u' ');
}

QList<int> SurfaceGeometry::pixelGlyph(const QString& name) {
    return MirlPlayer::pixelGlyph(name);
}

QVector<QRect> SurfaceGeometry::roundedRegion(const QRectF& shape, double radius) {
    QVector<QRect> rows;
    const QRect px = shape.toAlignedRect();
    if (px.isEmpty())
        return rows;
    const int r =
        int(std::ceil(std::clamp(radius, 0.0, std::min(shape.width(), shape.height()) / 2)));
    // Rows of the corners: each as wide as the circle allows at the row's middle.
    for (int i = 0; i < r; ++i) {
        const double dy = r - (i + 0.5);
        const int inset = int(std::round(r - std::sqrt(std::max(0.0, double(r) * r - dy * dy))));
        rows.append(QRect(px.left() + inset, px.top() + i, px.width() - 2 * inset, 1));
    }
    if (px.height() > 2 * r)
        rows.append(QRect(px.left(), px.top() + r, px.width(), px.height() - 2 * r));
    for (int i = r - 1; i >= 0; --i) {
        const QRect top = rows[i];
        rows.append(QRect(top.left(), px.bottom() - i, top.width(), 1));
    }
    return rows;
}

} // namespace MirlPlayer
