#pragma once

#include "look/HSB.h"

#include <QPointF>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace MirlPlayer {

// The light that the music throws into the glass: where the soft blobs of each pool fall, how big
// and how bright they are, and in what colour. Pure geometry; a painter draws the result.

// The brightness curve of the hand-tuning file that the light shares with the flat bars.
struct LightTuning {
    double floorBright = 0.6;
    double peakBright = 0.98;
    double peakWhite = 0.0;
};

// The colour of the light of a pool at position `ramp` colour (taken at the pool's place along
// the spectrum) with magnitude `m`; `strength` is the layer's colour strength. Loud pools turn
// whiter when the tuning asks for it.
HSB lightColour(const HSB& ramp, double m, double strength, const LightTuning& tuning);

// The 13 opacities of a blob's radial gradient, centre to rim, for a blob of alpha `a`.
std::vector<double> blobStops(double a);

struct LightBlob {
    QPointF centre;
    double radius = 0;
    double alpha = 0;
    HSB colour;
};

struct ReflectionFrame {
    std::vector<LightBlob> blobs;
    // The glass layer's wash over the top 34 % of the card: colour and alpha.
    std::optional<LightBlob> wash;
};

// The numbers a layer reads from the tuning store, already chosen for the library or the card.
struct ReflectionSettings {
    double amount = 0;
    double attack = 0;
    double release = 0;
    double colour = 0;
    double diffusion = 1; // the spread D
    double blur = 0;      // points of blur over the whole layer
};
enum class ReflectionKind { glass, edge };
// `value` reads a tuning key ("reflectAmount", "edgeAttack", ...).
ReflectionSettings reflectionSettings(ReflectionKind kind, bool libraryOpen,
                                      const std::function<double(const QString&)>& value);

// `colourAt(p, m)` gives the light colour of a pool at position p with magnitude m.
using LightColourAt = std::function<HSB(double p, double m)>;

// Along the bottom edge while the visualizer is shown; the lowest bass stays out of the glass.
ReflectionFrame glassReflection(const std::vector<double>& mags, double w, double h,
                                const ReflectionSettings& s, const LightColourAt& colourAt);
// Around the rim while the visualizer is hidden: low pools at the bottom, high ones meeting at
// the top, each mirrored left and right.
ReflectionFrame edgeReflection(const std::vector<double>& mags, double w, double h,
                               const ReflectionSettings& s, const LightColourAt& colourAt);

} // namespace MirlPlayer
