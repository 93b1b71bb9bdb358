#include "panel/ReflectionLight.h"

#include "audio/EQTuning.h"
#include "audio/LevelsStore.h"
#include "look/PlayerBackdrop.h"
#include "look/Theme.h"
#include "visualizers/VizConfig.h"

namespace MirlPlayer {

ReflectionFrame ReflectionLight::next(const LevelsStore* store, const Theme* theme,
                                      const VizConfig& viz, const QString& kind, bool libraryOpen,
                                      QSizeF canvas) {
    if (!store || !theme)
        return {};
    const ReflectionKind which =
        kind == QLatin1String("edge") ? ReflectionKind::edge : ReflectionKind::glass;
    const ReflectionSettings s = reflectionSettings(
        which, libraryOpen, [&viz](const QString& key) { return viz.value(key); });
    if (s.amount <= 0.001)
        return {};
    const std::vector<double>& mags =
        m_envelope.update(store->levels(), pools, s.attack, s.release, m_clock.now());
    const EQTuning& t = EQTuning::shared();
    const LightTuning tuning{t.floorBright, t.peakBright, t.peakWhite};
    const auto colourAt = [theme, &s, &tuning](double p, double m) {
        return lightColour(theme->colorAt(std::nullopt, p), m, s.colour, tuning);
    };
    return which == ReflectionKind::glass
               ? glassReflection(mags, canvas.width(), canvas.height(), s, colourAt)
               : edgeReflection(mags, canvas.width(), canvas.height(), s, colourAt);
}

ReflectionRaster::Glass glassOf(const PlayerBackdrop& backdrop) {
    const QColor c = backdrop.frostAndVeil();
    const float a = c.alphaF();
    return {c.redF() * a,
            c.greenF() * a,
            c.blueF() * a,
            a,
            float(backdrop.reflectionOpacity()),
            float(backdrop.sheenOpacity())};
}

} // namespace MirlPlayer
