#pragma once

#include "look/Theme.h"
#include "visualizers/views/BarShape.h"
#include "visualizers/views/SpectrumColours.h"
#include "visualizers/views/SpectrumSource.h"

#include <optional>

namespace MirlPlayer {

// One frame of the two bar styles, read once outside the loop: the levels, the canvas, what
// colours a band and where the bars stand.
struct BarFrame {
    QList<double> levels;
    double w = 0, h = 0;
    const Theme* theme = nullptr;
    EQTuning tuning;

    static std::optional<BarFrame> of(const SpectrumSource* source, double w, double h) {
        if (!source || !source->theme() || w <= 0 || h <= 0)
            return std::nullopt;
        BarFrame f{source->levels(), w, h, source->theme(), source->tuning()};
        if (f.levels.isEmpty())
            return std::nullopt;
        return f;
    }
    QColor colour(int i) const {
        return toColor(bandColour(*theme, i, int(levels.size()), levels[i], tuning));
    }
    BarShape shape(const SpectrumSource& source, bool mirrored) const {
        const int n = int(levels.size());
        return mirrored
                   ? BarShape::mirroredAbout(n, w, h, source.value(QStringLiteral("mirrorWidth")),
                                             source.value(QStringLiteral("mirrorHeight")))
                   : BarShape::standing(n, w, h, source.value(QStringLiteral("barsWidth")),
                                        source.value(QStringLiteral("barsRound")));
    }
};

} // namespace MirlPlayer
