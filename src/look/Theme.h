#pragma once

#include "look/HSB.h"
#include "look/PaletteGlide.h"
#include "look/Skin.h"

#include <QColor>
#include <QEasingCurve>
#include <QList>
#include <QObject>
#include <QVariantList>
#include <QVector4D>
#include <optional>

namespace MirlPlayer {

class Clock;
class Preferences;

// The one look model: background, colour preset, visualizer, pill position, control style, how
// fast things move, and the colours taken from the current cover. Every published value is
// mirrored to the preferences by its own setter; nothing else writes those keys. GUI thread only.
class Theme : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString backgroundStyleID READ backgroundStyleID WRITE setBackgroundStyleID NOTIFY
                   backgroundStyleIDChanged)
    Q_PROPERTY(double frostedGlassOpacity READ frostedGlassOpacity WRITE setFrostedGlassOpacity
                   NOTIFY frostedGlassOpacityChanged)
    Q_PROPERTY(double liquidGlassOpacity READ liquidGlassOpacity WRITE setLiquidGlassOpacity NOTIFY
                   liquidGlassOpacityChanged)
    Q_PROPERTY(bool glassReflection READ glassReflection WRITE setGlassReflection NOTIFY
                   glassReflectionChanged)
    Q_PROPERTY(bool edgeReflection READ edgeReflection WRITE setEdgeReflection NOTIFY
                   edgeReflectionChanged)
    Q_PROPERTY(QString currentID READ currentID WRITE setCurrentID NOTIFY currentIDChanged)
    Q_PROPERTY(QString inkID READ inkID WRITE setInkID NOTIFY inkIDChanged)
    Q_PROPERTY(QString positionID READ positionID WRITE setPositionID NOTIFY positionIDChanged)
    Q_PROPERTY(QString vizID READ vizID WRITE setVizID NOTIFY vizIDChanged)
    Q_PROPERTY(bool showVisualizer READ showVisualizer WRITE setShowVisualizer NOTIFY
                   showVisualizerChanged)
    Q_PROPERTY(double motionSpeed READ motionSpeed WRITE setMotionSpeed NOTIFY motionSpeedChanged)
    Q_PROPERTY(QString styleID READ styleID WRITE setStyleID NOTIFY styleIDChanged)
    Q_PROPERTY(double glow READ glow WRITE setGlow NOTIFY glowChanged)
    Q_PROPERTY(
        QList<double> customHSB READ customHSBList WRITE setCustomHSBList NOTIFY customHSBChanged)

    // Derived values.
    Q_PROPERTY(bool needsAudio READ needsAudio NOTIFY needsAudioChanged)
    Q_PROPERTY(
        QString effectiveBackgroundID READ effectiveBackgroundID NOTIFY effectiveBackgroundChanged)
    // The accessibility setting in force (ReduceTransparency tells it): the background is solid
    // and nothing is softened, while the stored background stays as chosen.
    Q_PROPERTY(bool reduceTransparency READ reduceTransparency NOTIFY effectiveBackgroundChanged)
    Q_PROPERTY(double currentGlassOpacity READ currentGlassOpacity WRITE setCurrentGlassOpacity
                   NOTIFY currentGlassOpacityChanged)
    Q_PROPERTY(double frostedDensity READ frostedDensity NOTIFY frostedGlassOpacityChanged)
    Q_PROPERTY(
        double frostedBlurStrength READ frostedBlurStrength NOTIFY frostedGlassOpacityChanged)
    Q_PROPERTY(MirlPlayer::Skin currentSkin READ currentSkin NOTIFY coloursChanged)
    Q_PROPERTY(QColor customColor READ customColor WRITE setCustomColor NOTIFY customHSBChanged)
    Q_PROPERTY(QColor inkColor READ inkColor NOTIFY coloursChanged)
    Q_PROPERTY(QVariantList inkChoices READ inkChoices NOTIFY coloursChanged)
    Q_PROPERTY(bool isColourlessCover READ isColourlessCover NOTIFY coloursChanged)
    Q_PROPERTY(QList<QColor> paletteColours READ paletteColours NOTIFY coloursChanged)
    Q_PROPERTY(bool albumColours READ albumColours WRITE setAlbumColours NOTIFY currentIDChanged)
    Q_PROPERTY(QVariantList skinChoices READ skinChoices CONSTANT)
    Q_PROPERTY(QVariantList backgroundChoices READ backgroundChoices CONSTANT)
    Q_PROPERTY(QVariantList playerStyleChoices READ playerStyleChoices CONSTANT)

public:
    Theme(Preferences& prefs, Clock& clock, QObject* parent = nullptr);
    ~Theme() override;

    // The process-wide instance, made at first use on the GUI thread and never destroyed.
    static Theme& shared();

    QString backgroundStyleID() const { return m_backgroundStyleID; }
    double frostedGlassOpacity() const { return m_frostedGlassOpacity; }
    double liquidGlassOpacity() const { return m_liquidGlassOpacity; }
    bool glassReflection() const { return m_glassReflection; }
    bool edgeReflection() const { return m_edgeReflection; }
    QString currentID() const { return m_currentID; }
    QString inkID() const { return m_inkID; }
    QString positionID() const { return m_positionID; }
    QString vizID() const { return m_vizID; }
    bool showVisualizer() const { return m_showVisualizer; }
    double motionSpeed() const { return m_motionSpeed; }
    QString styleID() const { return m_styleID; }
    double glow() const { return m_glow; }
    HSB customHSB() const { return m_customHSB; }

    void setBackgroundStyleID(const QString& id);
    void setFrostedGlassOpacity(double v);
    void setLiquidGlassOpacity(double v);
    void setGlassReflection(bool on);
    void setEdgeReflection(bool on);
    void setCurrentID(const QString& id);
    void setInkID(const QString& id);
    void setPositionID(const QString& id);
    void setVizID(const QString& id);
    void setShowVisualizer(bool on);
    void setMotionSpeed(double speed);
    void setStyleID(const QString& id);
    void setGlow(double glow);
    void setCustomHSB(const HSB& hsb);

    // Whether anything on screen consumes audio levels: the visualizer, or the edge light on a
    // frosted background.
    static bool needsAudioFor(bool showVisualizer, bool edgeReflection,
                              const QString& backgroundStyleID);
    bool needsAudio() const;
    QString effectiveBackgroundID() const;
    bool reduceTransparency() const { return m_reduceTransparency; }
    void setReduceTransparency(bool on);

    double currentGlassOpacity() const;
    void setCurrentGlassOpacity(double v);
    double frostedDensity() const;
    double frostedBlurStrength() const;

    Skin currentSkin() const;
    QColor customColor() const;
    // From a picked colour; never so grey or so dark that it vanishes. Selects the custom skin.
    void setCustomColor(const QColor& picked);
    QColor inkColor() const;
    QVariantList inkChoices() const;
    QVariantList skinChoices() const;
    QVariantList backgroundChoices() const;
    QVariantList playerStyleChoices() const;

    // The shared animation: an ease-out, shortened by a higher motion speed.
    struct Motion {
        double duration = 0; // seconds
        double delay = 0;    // seconds
        QEasingCurve easing;
    };
    Motion motion(double duration, double delay = 0) const;
    // For views: a duration or delay in seconds, scaled by the motion speed, in milliseconds.
    Q_INVOKABLE int motionMs(double seconds) const;

    // Artwork colours.
    std::optional<Palette> artPalette() const { return m_glide.palette(); }
    std::optional<Palette> lastArtwork() const { return m_lastArtwork; }
    // Hands over the palette of a new cover, or none when there is no artwork. With the album
    // skin a change glides over 0.9 s; otherwise it is kept quietly for when the skin switches.
    void setArtPalette(std::optional<Palette> palette);
    bool isGliding() const { return m_glide.isGliding(); }

    // The colour at position t (0 the lows, 1 the highs) along the spectrum.
    HSB colorAt(std::optional<double> hue, double t) const;
    Q_INVOKABLE QColor colorAtPosition(double t) const;
    // RGBA for ramp indices [from, to), index i being the colour at i / 95.
    QList<QVector4D> shaderRamp(int from = 0, int to = PaletteGlide::rampSize) const;
    bool isColourlessCover() const;
    QList<QColor> paletteColours() const;

    // The "album" switch of the settings: on selects the cover colours, off returns to the last
    // fixed preset.
    bool albumColours() const { return m_currentID == kAlbumSkinID; }
    void setAlbumColours(bool on);

Q_SIGNALS:
    void backgroundStyleIDChanged();
    void frostedGlassOpacityChanged();
    void liquidGlassOpacityChanged();
    void glassReflectionChanged();
    void edgeReflectionChanged();
    void currentIDChanged();
    void inkIDChanged();
    void positionIDChanged();
    void vizIDChanged();
    void showVisualizerChanged();
    void motionSpeedChanged();
    void styleIDChanged();
    void glowChanged();
    void customHSBChanged();
    void needsAudioChanged();
    void effectiveBackgroundChanged();
    void currentGlassOpacityChanged();
    // The skin, the ink or the announced cover colours changed.
    void coloursChanged();
    // Announced when the cover colours settle: at once, or at the end of a glide.
    void artPaletteChanged();
    // Each step of a glide. Frame-driven renderers that draw only on demand may use it to ask
    // for a frame; bound views are not told until the glide ends.
    void glideStepped();

private:
    QList<double> customHSBList() const;
    void setCustomHSBList(const QList<double>& list);
    void load();
    void writeCurrentID(const QString& id);
    void updateNeedsAudio();

    Preferences& m_prefs;
    bool m_reduceTransparency = false;

    QString m_backgroundStyleID;
    double m_frostedGlassOpacity = 0.5;
    double m_liquidGlassOpacity = 0.5;
    bool m_glassReflection = true;
    bool m_edgeReflection = true;
    QString m_currentID;
    QString m_inkID;
    QString m_positionID;
    QString m_vizID;
    bool m_showVisualizer = true;
    double m_motionSpeed = 1.0;
    QString m_styleID;
    double m_glow = 0.6;
    HSB m_customHSB{0.5, 0.12, 1.0};
    bool m_needsAudio = true;

    std::optional<Palette> m_lastArtwork;
    PaletteGlide m_glide;
};

} // namespace MirlPlayer
