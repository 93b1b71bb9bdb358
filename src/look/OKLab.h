#pragma once

#include "look/HSB.h"

namespace MirlPlayer {

// The perceptual colour space in which every palette decision is made, with the D65 sRGB
// matrices published with it. L is lightness 0...1, a and b the opponent axes.
struct OKLab {
    double L = 0;
    double a = 0;
    double b = 0;
};

// The polar form: C = chroma, h = hue angle in degrees, 0...360.
struct OKLCH {
    double L = 0;
    double C = 0;
    double h = 0;
};

double srgbToLinear(double v);
double linearToSrgb(double v);

OKLab linearSrgbToOklab(const RGB& linear);
RGB oklabToLinearSrgb(const OKLab& lab); // unclamped: may leave the gamut

OKLab srgbToOklab(const RGB& srgb);
OKLCH toOklch(const OKLab& lab);
OKLab toOklab(const OKLCH& lch);

OKLab hsbToOklab(const HSB& c);
// Out-of-gamut channels are clamped to 0...1 before gamma.
HSB oklabToHsb(const OKLab& lab);
HSB oklchToHsb(const OKLCH& lch);

double distance(const OKLab& x, const OKLab& y);
double distance(const OKLCH& x, const OKLCH& y);

// Every colour that reaches a palette passes through this: lightness into 0.66...0.92 so dark
// covers still give visible colours, chroma raised by a fifth but at most 0.18 so nothing turns
// garish.
HSB liftColour(const HSB& c);

} // namespace MirlPlayer
