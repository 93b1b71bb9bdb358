#pragma once

#include "core/Clock.h"
#include "look/Reflection.h"
#include "look/ReflectionEnvelope.h"
#include "look/ReflectionRaster.h"

#include <QSizeF>
#include <QString>

namespace MirlPlayer {

class LevelsStore;
class PlayerBackdrop;
class Theme;
class VizConfig;

// One layer's music light, frame after frame: the band levels through the layer's own envelope
// into blobs for a canvas of a size. Whoever draws a light owns one, so that its envelope lives
// as long as that light is on screen.
class ReflectionLight {
public:
    // The light of this redraw, moving the envelope on; nothing below the amount's threshold,
    // and then the envelope's time stands still.
    ReflectionFrame next(const LevelsStore* store, const Theme* theme, const VizConfig& viz,
                         const QString& kind, bool libraryOpen, QSizeF canvas);
    // A light that leaves and returns starts from dark.
    void reset() { m_envelope = {}; }

    static constexpr int pools = 22;

private:
    ReflectionEnvelope m_envelope;
    Clock& m_clock = Clock::system();
};

// The glass the backdrop's light is drawn into: frost and veil, premultiplied, the light's opacity
// and the sheen's.
ReflectionRaster::Glass glassOf(const PlayerBackdrop& backdrop);

} // namespace MirlPlayer
