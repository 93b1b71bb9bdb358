#pragma once

#include "look/HSB.h"
#include "look/OKLab.h"

#include <QImage>
#include <QList>

namespace MirlPlayer {

// One k-means centre with the total weight of the points assigned to it.
struct Cluster {
    OKLab centre;
    double weight = 0;
};

// Weighted k-means over OKLab points. Seeds: the heaviest point, then repeatedly the point with
// the largest weight x squared distance to its nearest seed, until k seeds exist or every point
// sits on a seed. Ten rounds of assign-and-move follow. Returns the centres that kept any weight,
// heaviest first (a stable order on ties).
QList<Cluster> weightedKMeans(const QList<OKLab>& points, const QList<double>& weights, int k);

// Of all 24 orders of four colours, the one whose consecutive OKLab distances add up shortest;
// an order that does not start with the first colour pays a small penalty, so the dominant colour
// stays at the lows when it costs little. Ties go to the first order in enumeration order.
QList<OKLCH> shortestPathOrder(const QList<OKLCH>& four);

// The palette of a cover: up to four colours (exactly four for any drawable image), ordered so
// that neighbours look alike. A null or undrawable image gives an empty palette ("none").
// Pure and thread-safe: it touches no shared state, so the poll queue may call it.
Palette extractPalette(const QImage& image);

// The player's accent colour for a palette: its first colour at full opacity, or white.
QColor accentColour(const Palette& palette);

} // namespace MirlPlayer
