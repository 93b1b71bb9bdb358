#pragma once

#include "look/Skin.h"
#include "look/Theme.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>

namespace MirlPlayer {

// The material behind the pill, the card and the library, as the view draws it: which form, the
// opacities of its layers and which music light lies in the glass. Every number comes from the
// Theme; the view only binds. Without a glass material on this platform `liquid` is drawn as
// `frosted`; with reduced transparency (its own flag, or the Theme's) everything is `solid`.
class PlayerBackdrop : public QObject {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::Theme* theme READ theme WRITE setTheme NOTIFY changed)
    Q_PROPERTY(
        bool reduceTransparency READ reduceTransparency WRITE setReduceTransparency NOTIFY changed)
    // Whether the platform has a glass material of its own; only then is `liquid` drawn.
    Q_PROPERTY(bool glassAvailable READ glassAvailable WRITE setGlassAvailable NOTIFY changed)
    Q_PROPERTY(bool hasLevels READ hasLevels WRITE setHasLevels NOTIFY changed)
    Q_PROPERTY(QString form READ form NOTIFY changed)
    Q_PROPERTY(double frostAlpha READ frostAlpha NOTIFY changed)
    // The tint of the frost: where the compositor blurs behind the window it tints the blur;
    // elsewhere it is the translucent fill that stands for it.
    Q_PROPERTY(QColor frostColor READ frostColor CONSTANT)
    Q_PROPERTY(double veilOpacity READ veilOpacity NOTIFY changed)
    // The frost with the veil over it, as one paint: one pass over the shape's pixels, not two.
    Q_PROPERTY(QColor frostAndVeil READ frostAndVeil NOTIFY changed)
    Q_PROPERTY(double reflectionOpacity READ reflectionOpacity NOTIFY changed)
    Q_PROPERTY(double sheenOpacity READ sheenOpacity NOTIFY changed)
    Q_PROPERTY(QString reflection READ reflection NOTIFY changed)
    Q_PROPERTY(double liquidDiffusion READ liquidDiffusion NOTIFY changed)
    Q_PROPERTY(double liquidSmoke READ liquidSmoke NOTIFY changed)
public:
    explicit PlayerBackdrop(QObject* parent = nullptr);

    Theme* theme() const { return m_theme; }
    void setTheme(Theme* theme);
    bool reduceTransparency() const { return m_reduceTransparency; }
    void setReduceTransparency(bool on);
    bool glassAvailable() const { return m_glassAvailable; }
    void setGlassAvailable(bool on);
    bool hasLevels() const { return m_hasLevels; }
    void setHasLevels(bool on);

    // The form in force for a stored id.
    static PlayerBackground effectiveForm(const QString& storedID, bool reduceTransparency,
                                          bool glassAvailable);
    // The smoothstep of the liquid glass's density; a density that is not finite is 0.5.
    static double liquidStrength(double density);

    QString form() const;
    double frostAlpha() const;
    static QColor frostColor() { return QColor(24, 24, 30, 158); }
    double veilOpacity() const;
    QColor frostAndVeil() const;
    // One colour that paints like `under` at `underOpacity` with `over` at `overOpacity` on
    // top of it, over any background.
    static QColor stacked(const QColor& under, double underOpacity, const QColor& over,
                          double overOpacity);
    double reflectionOpacity() const;
    double sheenOpacity() const;
    // The sheen's white at a place t along its diagonal (0 top left, 1 bottom right), before the
    // layer's opacity: 13 % down to clear in the middle, up to 2.5 %.
    static double sheenAlpha(double t);
    // Frost, veil and sheen as one paint at t: what the three layers show stacked there.
    Q_INVOKABLE QColor frostedFill(double t) const;
    // "glass" along the bottom with the visualizer, "edge" around the rim without it, else "".
    QString reflection() const;
    double liquidDiffusion() const;
    double liquidSmoke() const { return liquidDiffusion() * 0.72; }

Q_SIGNALS:
    void changed();

private:
    PlayerBackground current() const;

    QPointer<Theme> m_theme;
    bool m_reduceTransparency = false;
    bool m_glassAvailable = false;
    bool m_hasLevels = true;
};

} // namespace MirlPlayer
