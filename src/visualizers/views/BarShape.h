#pragma once

#include <QRectF>

namespace MirlPlayer {

// Where the bars of `BarsEQ` and `MirrorEQ` stand on a canvas: one slot per band, the bar centred
// in it, at least one unit wide and one unit high, so the row never disappears.
struct BarShape {
    double slot = 0;
    double width = 0;
    double radius = 0;
    double canvasHeight = 0;
    bool mirrored = false;
    double scale = 0; // the height (mirrored: the half height) of a level of 1

    // Bars standing on the bottom edge; the corners round by `round`, at most half the width.
    static BarShape standing(int n, double w, double h, double widthShare, double round);
    // Bars mirrored about the middle line, `heightShare` of the canvas high at a level of 1.
    static BarShape mirroredAbout(int n, double w, double h, double widthShare, double heightShare);

    QRectF rect(int i, double level) const;
};

} // namespace MirlPlayer
