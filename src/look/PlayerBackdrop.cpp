#include "look/PlayerBackdrop.h"

#include "look/Theme.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

PlayerBackdrop::PlayerBackdrop(QObject* parent)
    : QObject(parent) {}

void PlayerBackdrop::setTheme(Theme* theme) {
    if (m_theme == theme)
        return;
    if (m_theme)
        disconnect(m_theme, nullptr, this, nullptr);
    m_theme = theme;
    if (theme) {
        for (auto signal : {&Theme::effectiveBackgroundChanged, &Theme::frostedGlassOpacityChanged,
                            &Theme::liquidGlassOpacityChanged, &Theme::showVisualizerChanged,
                            &Theme::glassReflectionChanged, &Theme::edgeReflectionChanged})
            connect(theme, signal, this, &PlayerBackdrop::changed);
    }
    Q_EMIT changed();
}

void PlayerBackdrop::setReduceTransparency(bool on) {
    if (on == m_reduceTransparency)
        return;
    m_reduceTransparency = on;
    Q_EMIT changed();
}

void PlayerBackdrop::setGlassAvailable(bool on) {
    if (on == m_glassAvailable)
        return;
    m_glassAvailable = on;
    Q_EMIT changed();
}

void PlayerBackdrop::setHasLevels(bool on) {
    if (on == m_hasLevels)
        return;
    m_hasLevels = on;
    Q_EMIT changed();
}

PlayerBackground PlayerBackdrop::effectiveForm(const QString& storedID, bool reduceTransparency,
                                               bool glassAvailable) {
    if (reduceTransparency)
        return PlayerBackground::solid;
    const PlayerBackground b = playerBackground(storedID).value_or(PlayerBackground::frosted);
    if (b == PlayerBackground::liquid && !glassAvailable)
        return PlayerBackground::frosted;
    return b;
}

double PlayerBackdrop::liquidStrength(double d) {
    d = std::isfinite(d) ? std::clamp(d, 0.0, 1.0) : 0.5;
    return d * d * (3 - 2 * d);
}

PlayerBackground PlayerBackdrop::current() const {
    return m_theme ? effectiveForm(m_theme->backgroundStyleID(),
                                   m_reduceTransparency || m_theme->reduceTransparency(),
                                   m_glassAvailable)
                   : PlayerBackground::solid;
}

QString PlayerBackdrop::form() const {
    return rawValue(current());
}

double PlayerBackdrop::frostAlpha() const {
    return m_theme ? m_theme->frostedBlurStrength() : 0;
}

double PlayerBackdrop::veilOpacity() const {
    return m_theme ? std::pow(m_theme->frostedDensity(), 2.2) * 0.92 : 1;
}

double PlayerBackdrop::reflectionOpacity() const {
    return frostAlpha();
}

double PlayerBackdrop::sheenOpacity() const {
    return m_theme ? std::max(m_theme->frostedDensity(), 0.25) : 0;
}

QString PlayerBackdrop::reflection() const {
    if (!m_theme || current() != PlayerBackground::frosted || !m_hasLevels ||
        m_theme->frostedBlurStrength() <= 0.001)
        return {};
    if (m_theme->showVisualizer())
        return m_theme->glassReflection() ? QStringLiteral("glass") : QString();
    return m_theme->edgeReflection() ? QStringLiteral("edge") : QString();
}

double PlayerBackdrop::liquidDiffusion() const {
    return m_theme ? liquidStrength(m_theme->liquidGlassOpacity()) : 0;
}

} // namespace MirlPlayer
