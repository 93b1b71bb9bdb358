#pragma once

#include "look/Reflection.h"
#include "look/ReflectionRaster.h"

#include <QColor>
#include <QHash>
#include <QImage>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <array>
#include <optional>

namespace MirlPlayer {

// What the resting pill shows in one frame, in points.
struct PillLook {
    QSizeF size;
    double cornerRadius = 12;
    double devicePixelRatio = 1;
    // Where the shape's top left falls in the picture, in device pixels: the fraction of a
    // pixel the shape lies off the pixel grid.
    QPointF offset;
    bool solid = false; // else frosted glass
    // The frosted glass and the music's light in it.
    ReflectionRaster::Glass glass;
    ReflectionFrame light;
    QColor accent;
    QColor ink;
    // The meter's four capsule heights; without a meter, the play-state symbol.
    std::optional<std::array<double, 4>> meter;
    QString symbol;
};

// Paints the resting pill as the panel's scene draws it, into one picture a window can show as it
// is: the material (black, or the glass with the light in it), the rim lit from the top left, and
// the one indicator in its 20 x 11 box at the centre. The rim is painted once per size and accent.
class PillPicture {
public:
    // Meter, symbol and box as the pill's scene has them.
    static constexpr double boxWidth = 20;
    static constexpr double boxHeight = 11;
    static constexpr double meterSpacing = 2;
    static constexpr double symbolSize = 9;

    const QImage& draw(const PillLook& look);

private:
    // The material's part that stays: black, or the rim over the glass.
    const QImage& rim(const PillLook& look, QSize pixels);
    // A capsule of the meter (no symbol) or a symbol, `pixels` large, a `fraction` of a pixel
    // off the grid; painted once and kept.
    const QImage& mark(const QString& symbol, QSizeF pixels, QPointF fraction,
                       const PillLook& look);
    void place(const QString& symbol, QPointF at, QSizeF size, const PillLook& look);

    struct RimKey {
        QColor accent;
        QSizeF size;
        double radius = -1;
        QPointF offset;
        bool solid = false;
        bool operator==(const RimKey&) const = default;
    };

    ReflectionRaster m_raster;
    QImage m_image;
    QImage m_rim;
    RimKey m_rimKey;
    QHash<quint64, QImage> m_marks;
    QColor m_markInk;
    double m_markScale = 0;
};

} // namespace MirlPlayer
