#pragma once

#include "audio/EQTuning.h"
#include "look/HSB.h"

#include <QColor>
#include <QList>

namespace MirlPlayer {

class Theme;

// The colour of one band or column at level v, given the colour of its place along the spectrum:
// quiet bands keep `floorBright` of the brightness, loud ones reach `peakBright`, and above 0.6 a
// band runs hot (brighter, and towards white as far as `peakWhite` allows).
HSB levelColour(const HSB& place, double v, const EQTuning& tuning);

// The colour of band i of n at level v, placed along the spectrum of the current skin.
HSB bandColour(const Theme& theme, int i, int n, double v, const EQTuning& tuning);

// The levels reduced to n display columns: each column takes the loudest band of its share,
// and at least one band even when there are fewer bands than columns.
QList<double> spectrumColumns(const QList<double>& levels, int n);

// The 16 colours of the designer styles' gradients: the spectrum of the current skin, dressed as
// a band at level 0.7.
QList<QColor> designerGradient(const Theme& theme, const EQTuning& tuning);

} // namespace MirlPlayer
