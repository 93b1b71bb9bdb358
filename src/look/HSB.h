#pragma once

#include <QColor>
#include <QList>
#include <QMetaType>

namespace MirlPlayer {

// A colour as the look model thinks of it: hue 0...1 (a full turn), saturation and brightness.
struct HSB {
    double h = 0;
    double s = 0;
    double b = 0;
    friend bool operator==(const HSB&, const HSB&) = default;
};

// A palette of artwork colours. A real cover gives four; the one-entry palette [hue, 0, 1] is the
// colourless (white) case. An empty palette means "none".
using Palette = QList<HSB>;

// Gamma-encoded (or linear, where a name says so) red, green, blue in 0...1.
struct RGB {
    double r = 0;
    double g = 0;
    double b = 0;
};

// The plain sextant conversion. Hue is taken modulo one turn, so a hue swept past 0 or 1 by the
// fixed-colour sweep still gives a colour.
RGB hsbToRgb(const HSB& c);
// The plain inverse; a channel spread below 1e-9 gives hue 0.
HSB rgbToHsb(const RGB& c);

// The blend used by the glide: hue the short way round the wheel (wrapped into 0...1),
// saturation and brightness linearly.
HSB blend(const HSB& from, const HSB& to, double e);

// For views: hue wrapped, channels clamped, at the given opacity.
QColor toColor(const HSB& c, double alpha = 1.0);

} // namespace MirlPlayer

Q_DECLARE_METATYPE(MirlPlayer::HSB)
