#include "look/HSB.h"
#include "look/OKLab.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

namespace {
double clamp01(double v) {
    return std::clamp(v, 0.0, 1.0);
}
double wrapTurn(double h) {
    return h - std::floor(h);
}
} // namespace

RGB hsbToRgb(const HSB& c) {
    const double h6 = wrapTurn(c.h) * 6.0;
    const double sector = std::floor(h6);
    const double f = h6 - sector;
    const double v = c.b;
    const double p = v * (1.0 - c.s);
    const double q = v * (1.0 - c.s * f);
    const double t = v * (1.0 - c.s * (1.0 - f));
    switch (int(sector) % 6) {
    case 0:
        return {v, t, p};
    case 1:
        return {q, v, p};
    case 2:
        return {p, v, t};
    case 3:
        return {p, q, v};
    case 4:
        return {t, p, v};
    default:
        return {v, p, q};
    }
}

HSB rgbToHsb(const RGB& c) {
    const double mx = std::max({c.r, c.g, c.b});
    const double mn = std::min({c.r, c.g, c.b});
    const double spread = mx - mn;
    HSB out;
    out.b = mx;
    out.s = mx > 0 ? spread / mx : 0.0;
    if (spread < 1e-9) {
        out.h = 0;
        return out;
    }
    double h;
    if (mx == c.r)
        h = (c.g - c.b) / spread;
    else if (mx == c.g)
        h = 2.0 + (c.b - c.r) / spread;
    else
        h = 4.0 + (c.r - c.g) / spread;
    h /= 6.0;
    if (h < 0)
        h += 1.0;
    out.h = h;
    return out;
}

HSB blend(const HSB& from, const HSB& to, double e) {
    const double d = to.h - from.h;
    const double hue = wrapTurn(from.h + (d - std::round(d)) * e);
    return {hue, from.s + (to.s - from.s) * e, from.b + (to.b - from.b) * e};
}

QColor toColor(const HSB& c, double alpha) {
    const RGB rgb = hsbToRgb({c.h, clamp01(c.s), clamp01(c.b)});
    return QColor::fromRgbF(float(clamp01(rgb.r)), float(clamp01(rgb.g)), float(clamp01(rgb.b)),
                            float(clamp01(alpha)));
}

double srgbToLinear(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double linearToSrgb(double v) {
    return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1.0 / 2.4) - 0.055;
}

OKLab linearSrgbToOklab(const RGB& c) {
    const double l = 0.4122214708 * c.r + 0.5363325363 * c.g + 0.0514459929 * c.b;
    const double m = 0.2119034982 * c.r + 0.6806995451 * c.g + 0.1073969566 * c.b;
    const double s = 0.0883024619 * c.r + 0.2817188376 * c.g + 0.6299787005 * c.b;
    const double l_ = std::cbrt(l);
    const double m_ = std::cbrt(m);
    const double s_ = std::cbrt(s);
    return {0.2104542553 * l_ + 0.7936177850 * m_ - 0.0040720468 * s_,
            1.9779984951 * l_ - 2.4285922050 * m_ + 0.4505937099 * s_,
            0.0259040371 * l_ + 0.7827717662 * m_ - 0.8086757660 * s_};
}

RGB oklabToLinearSrgb(const OKLab& c) {
    const double l_ = c.L + 0.3963377774 * c.a + 0.2158037573 * c.b;
    const double m_ = c.L - 0.1055613458 * c.a - 0.0638541728 * c.b;
    const double s_ = c.L - 0.0894841775 * c.a - 1.2914855480 * c.b;
    const double l = l_ * l_ * l_;
    const double m = m_ * m_ * m_;
    const double s = s_ * s_ * s_;
    return {+4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
            -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
            -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
}

OKLab srgbToOklab(const RGB& c) {
    return linearSrgbToOklab({srgbToLinear(c.r), srgbToLinear(c.g), srgbToLinear(c.b)});
}

OKLCH toOklch(const OKLab& c) {
    double h = std::atan2(c.b, c.a) * 180.0 / M_PI;
    if (h < 0)
        h += 360.0;
    return {c.L, std::sqrt(c.a * c.a + c.b * c.b), h};
}

OKLab toOklab(const OKLCH& c) {
    const double rad = c.h * M_PI / 180.0;
    return {c.L, c.C * std::cos(rad), c.C * std::sin(rad)};
}

OKLab hsbToOklab(const HSB& c) {
    return srgbToOklab(hsbToRgb(c));
}

HSB oklabToHsb(const OKLab& lab) {
    const RGB lin = oklabToLinearSrgb(lab);
    return rgbToHsb(
        {linearToSrgb(clamp01(lin.r)), linearToSrgb(clamp01(lin.g)), linearToSrgb(clamp01(lin.b))});
}

HSB oklchToHsb(const OKLCH& lch) {
    return oklabToHsb(toOklab(lch));
}

double distance(const OKLab& x, const OKLab& y) {
    const double dL = x.L - y.L;
    const double da = x.a - y.a;
    const double db = x.b - y.b;
    return std::sqrt(dL * dL + da * da + db * db);
}

double distance(const OKLCH& x, const OKLCH& y) {
    return distance(toOklab(x), toOklab(y));
}

HSB liftColour(const HSB& c) {
    OKLCH lch = toOklch(hsbToOklab(c));
    lch.L = std::clamp(lch.L, 0.66, 0.92);
    lch.C = std::min(lch.C * 1.2, 0.18);
    return oklchToHsb(lch);
}

} // namespace MirlPlayer
