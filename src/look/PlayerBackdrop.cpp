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

QColor PlayerBackdrop::frostAndVeil() const {
    return stacked(frostColor(), frostAlpha(), Qt::black, veilOpacity());
}

QColor PlayerBackdrop::stacked(const QColor& under, double underOpacity, const QColor& over,
                               double overOpacity) {
    const double a1 = std::clamp(under.alphaF() * underOpacity, 0.0, 1.0);
    const double a2 = std::clamp(over.alphaF() * overOpacity, 0.0, 1.0);
    const double a = 1 - (1 - a1) * (1 - a2);
    if (a <= 0)
        return Qt::transparent;
    // Premultiplied: the lower layer shows through the upper by (1 - a2).
    const auto mix = [&](double c1, double c2) { return (c1 * a1 * (1 - a2) + c2 * a2) / a; };
    return QColor::fromRgbF(float(mix(under.redF(), over.redF())),
                            float(mix(under.greenF(), over.greenF())),
                            float(mix(under.blueF(), over.blueF())), float(a));
}

double PlayerBackdrop::reflectionOpacity() const {
    return frostAlpha();
}

double PlayerBackdrop::sheenOpacity() const {
    return m_theme ? std::max(m_theme->frostedDensity(), 0.25) : 0;
}

double PlayerBackdrop::sheenAlpha(double t) {
    t = std::clamp(t, 0.0, 1.0);
    return t < 0.5 ? 0.13 * (1 - 2 * t) : 0.025 * (2 * t - 1);
}

QColor PlayerBackdrop::frostedFill(double t) const {
    return stacked(frostAndVeil(), 1, QColor::fromRgbF(1, 1, 1, float(sheenAlpha(t))),
                   sheenOpacity());
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
