#pragma once

#include <QObject>
#include <QPainterPath>
#include <QRect>
#include <QRectF>
#include <QString>
#include <QVector>

namespace MirlPlayer {

// The outlines the surface draws, as SVG path text for QML's shapes, and the rounded shape as a
// set of pixel rows for the compositor's blur region.
class SurfaceGeometry : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // A rounded rectangle of w x h at (x, y) with corner radius r.
    Q_INVOKABLE static QString roundedRectPath(double x, double y, double w, double h, double r);
    // A ring `width` thick just inside the rounded rectangle's edge (fill it with odd-even).
    Q_INVOKABLE static QString ringPath(double w, double h, double r, double width);
    // A rectangle whose top-left and bottom-right corners are cut at 45 degrees by `cut`.
    Q_INVOKABLE static QString cutCornerPath(double w, double h, double cut);
    // "play", "pause", "next", "previous" (drawn as "next" mirrored) and "note" in a square of
    // `size`.
    Q_INVOKABLE static QString symbolPath(const QString& kind, double size);
    // The same outline for a painter; "note" is not among them and gives an empty path.
    static QPainterPath symbolShape(const QString& kind, double size);
    // The 49 squares of a pixel glyph, row by row: "play", "pause", "next", "prev".
    Q_INVOKABLE static QList<int> pixelGlyph(const QString& name);

    // The rounded rectangle as rows of whole pixels that together cover exactly its inside: the
    // straight middle as one rectangle, each corner row as one more, so a compositor that blurs
    // behind a region keeps the blur inside the round corners.
    static QVector<QRect> roundedRegion(const QRectF& shape, double radius);
};

} // namespace MirlPlayer
