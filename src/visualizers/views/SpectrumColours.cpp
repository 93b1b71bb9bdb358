#include "visualizers/views/SpectrumColours.h"

#include "look/Theme.h"

#include <algorithm>

namespace MirlPlayer {

namespace {

double hotness(double v) {
    return std::max((v - 0.6) / 0.4, 0.0);
}

} // namespace

HSB levelColour(const HSB& place, double v, const EQTuning& tuning) {
    const double hot = hotness(v);
    const double satFactor = std::clamp(tuning.peakWhite * hot * -0.75 + 0.95, 0.2, 1.0);
    const double briFactor = std::min(
        tuning.floorBright + (tuning.peakBright - tuning.floorBright) * v + hot * 0.1, 1.0);
    return {place.h, place.s * satFactor, place.b * briFactor};
}

HSB bandColour(const Theme& theme, int i, int n, double v, const EQTuning& tuning) {
    const double t = n > 1 ? double(i) / double(n - 1) : 0.0;
    return levelColour(theme.colorAt(theme.currentSkin().hue, t), v, tuning);
}

QList<double> spectrumColumns(const QList<double>& levels, int n) {
    QList<double> columns;
    const qsizetype count = levels.size();
    if (count == 0 || n <= 0)
        return columns;
    columns.reserve(n);
    for (int k = 0; k < n; ++k) {
        const qsizetype start = k * count / n;
        const qsizetype end = std::min(std::max(start + 1, (k + 1) * count / n), count);
        double peak = 0;
        for (qsizetype j = start; j < end; ++j)
            peak = std::max(peak, levels[j]);
        columns.append(std::clamp(peak, 0.0, 1.0));
    }
    return columns;
}

QList<QColor> designerGradient(const Theme& theme, const EQTuning& tuning) {
    const double hue = theme.currentSkin().hue;
    QList<QColor> colours;
    for (int i = 0; i < 16; ++i)
        colours.append(toColor(levelColour(theme.colorAt(hue, i / 15.0), 0.7, tuning)));
    return colours;
}

} // namespace MirlPlayer
