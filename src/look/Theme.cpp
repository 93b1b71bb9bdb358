#include "look/Theme.h"

#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/OKLab.h"

#include <QVariantMap>
#include <algorithm>
#include <cmath>

namespace MirlPlayer {

namespace {

namespace Key {
const QString backgroundStyleID = QStringLiteral("backgroundStyleID");
const QString frostedGlassOpacity = QStringLiteral("frostedGlassOpacity");
const QString liquidGlassOpacity = QStringLiteral("liquidGlassOpacity");
const QString glassReflection = QStringLiteral("glassReflection");
const QString edgeReflection = QStringLiteral("edgeReflection");
const QString skinID = QStringLiteral("skinID");
const QString lastFixedSkinID = QStringLiteral("lastFixedSkinID");
const QString inkID = QStringLiteral("inkID");
const QString positionID = QStringLiteral("positionID");
const QString vizID = QStringLiteral("vizID");
const QString showVisualizer = QStringLiteral("showVisualizer");
const QString motionSpeed = QStringLiteral("motionSpeed");
const QString styleID = QStringLiteral("styleID");
const QString glow = QStringLiteral("glow");
const QString customHSB = QStringLiteral("customHSB");
// Keys of older versions, read once at start to carry the user's glass over.
const QString glassBackground = QStringLiteral("glassBackground");
const QString glassDensityVersion = QStringLiteral("glassDensityVersion");
const QString glassOpacity = QStringLiteral("glassOpacity");
const QString glassTint = QStringLiteral("glassTint");
} // namespace Key

// The density at the middle of the glass slider. The slider is piecewise linear around it so
// that its middle matches the look older versions had by default.
constexpr double kMidDensity = 0.6135525173611112;
constexpr double kUpperDensitySpan = 0.38644748263888884;
constexpr double kBlurSpan = 0.4316840277777778;
constexpr double kMinBlur = 0.55;
constexpr int kDensityVersion = 2;

const HSB kDefaultCustomHSB{0.5, 0.12, 1.0};
// A picked custom colour is held at least this colourful and this bright.
constexpr double kMinCustomSaturation = 0.12;
constexpr double kMinCustomBrightness = 0.35;

constexpr double kMinMotionSpeed = 0.5;
constexpr double kMaxMotionSpeed = 2.0;

// How far the fixed-colour sweep and the one-colour album sweep turn the hue from lows to highs.
constexpr double kFixedHueSweep = 0.14;
constexpr double kAlbumHueSweep = 0.05;

double clampOpacity(double v) {
    return std::isfinite(v) ? std::clamp(v, 0.0, 1.0) : 0.5;
}

std::optional<double> storedFinite(const Preferences& prefs, const QString& key) {
    const std::optional<double> d = prefs.numberValue(key);
    return d && std::isfinite(*d) ? d : std::nullopt;
}

// A stored value that reads as a Bool whatever fallback is offered.
std::optional<bool> storedBool(const Preferences& prefs, const QString& key) {
    if (!prefs.contains(key))
        return std::nullopt;
    const bool a = prefs.boolValue(key, true);
    const bool b = prefs.boolValue(key, false);
    return a == b ? std::optional<bool>(a) : std::nullopt;
}

std::optional<HSB> storedHSB(const Preferences& prefs, const QString& key) {
    const QVariant v = prefs.object(key);
    if (!v.canConvert<QVariantList>() || v.typeId() == QMetaType::QString)
        return std::nullopt;
    const QVariantList list = v.toList();
    if (list.size() != 3)
        return std::nullopt;
    double values[3];
    for (int i = 0; i < 3; ++i) {
        const QVariant& e = list[i];
        bool ok = false;
        if (e.typeId() == QMetaType::QString)
            values[i] = e.toString().trimmed().toDouble(&ok);
        else if (e.typeId() == QMetaType::Double || e.typeId() == QMetaType::Int ||
                 e.typeId() == QMetaType::LongLong || e.typeId() == QMetaType::Float)
            values[i] = e.toDouble(&ok);
        if (!ok || !std::isfinite(values[i]))
            return std::nullopt;
    }
    return HSB{values[0], values[1], values[2]};
}

// The glass density older versions stored, moved onto the slider scale whose middle is
// kMidDensity.
double densityToSlider(double x) {
    return x <= kMidDensity ? 0.5 * x / kMidDensity
                            : 0.5 + 0.5 * (x - kMidDensity) / (1.0 - kMidDensity);
}

QVariantMap choice(const QString& id, const QString& name, const QColor& colour) {
    return {{QStringLiteral("id"), id},
            {QStringLiteral("name"), name},
            {QStringLiteral("color"), colour}};
}

} // namespace

Theme::Theme(Preferences& prefs, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_prefs(prefs)
    , m_glide(clock) {
    connect(&m_glide, &PaletteGlide::stepped, this, &Theme::glideStepped);
    connect(&m_glide, &PaletteGlide::settled, this, [this] {
        Q_EMIT artPaletteChanged();
        Q_EMIT coloursChanged();
    });
    load();
}

Theme::~Theme() = default;

Theme& Theme::shared() {
    // Lives to the end of the process, as the views and the capture read it until then.
    static Theme* theme = new Theme(Preferences::shared(), Clock::system());
    return *theme;
}

void Theme::load() {
    // Background: the stored id, else what the old on/off glass switch meant.
    const QString storedBackground = m_prefs.stringValue(Key::backgroundStyleID);
    if (m_prefs.contains(Key::backgroundStyleID) && !storedBackground.isNull()) {
        m_backgroundStyleID = storedBackground;
    } else {
        const std::optional<bool> glass = storedBool(m_prefs, Key::glassBackground);
        m_backgroundStyleID =
            glass && !*glass ? QStringLiteral("solid") : QStringLiteral("frosted");
    }

    // Glass density: older versions stored an alpha ("glassOpacity") or a tint strength
    // ("glassTint"); both move onto today's slider once, after which the version is 2.
    double density = 0.5;
    if (m_prefs.intValue(Key::glassDensityVersion, 0) >= kDensityVersion) {
        const std::optional<double> stored = storedFinite(m_prefs, Key::glassOpacity);
        density = stored ? std::clamp(*stored, 0.0, 1.0) : 0.5;
    } else {
        std::optional<double> x;
        if (const auto opacity = storedFinite(m_prefs, Key::glassOpacity)) {
            x = std::clamp(*opacity, 0.0, 1.0);
        } else if (const auto tint = storedFinite(m_prefs, Key::glassTint)) {
            x = std::clamp(std::pow(std::max(*tint, 0.0) / 0.92, 1.0 / 2.2), 0.05, 1.0);
        }
        density = x ? densityToSlider(*x) : 0.5;
        m_prefs.setValue(Key::glassOpacity, density);
        m_prefs.setValue(Key::glassDensityVersion, kDensityVersion);
    }
    m_frostedGlassOpacity =
        clampOpacity(m_prefs.numberValue(Key::frostedGlassOpacity).value_or(density));
    m_liquidGlassOpacity =
        clampOpacity(m_prefs.numberValue(Key::liquidGlassOpacity).value_or(density));
    m_prefs.setValue(Key::frostedGlassOpacity, m_frostedGlassOpacity);
    m_prefs.setValue(Key::liquidGlassOpacity, m_liquidGlassOpacity);

    m_glassReflection = m_prefs.boolValue(Key::glassReflection, true);
    m_edgeReflection = m_prefs.boolValue(Key::edgeReflection, true);
    m_currentID = m_prefs.stringValue(Key::skinID, kCustomSkinID);
    m_inkID = m_prefs.stringValue(Key::inkID, QStringLiteral("auto"));
    m_positionID = m_prefs.stringValue(Key::positionID, QStringLiteral("right"));
    m_vizID = m_prefs.stringValue(Key::vizID, QStringLiteral("mirror"));
    m_showVisualizer = m_prefs.boolValue(Key::showVisualizer, true);
    m_motionSpeed =
        std::clamp(m_prefs.doubleValue(Key::motionSpeed, 1.0), kMinMotionSpeed, kMaxMotionSpeed);
    m_styleID = m_prefs.stringValue(Key::styleID, QStringLiteral("apple"));
    m_glow = m_prefs.doubleValue(Key::glow, 0.6);
    m_customHSB = storedHSB(m_prefs, Key::customHSB).value_or(kDefaultCustomHSB);
    m_needsAudio = needsAudioFor(m_showVisualizer, m_edgeReflection, m_backgroundStyleID);
}

// Setters --------------------------------------------------------------------------------------

void Theme::setBackgroundStyleID(const QString& id) {
    if (id == m_backgroundStyleID)
        return;
    m_backgroundStyleID = id;
    m_prefs.setValue(Key::backgroundStyleID, id);
    Q_EMIT backgroundStyleIDChanged();
    Q_EMIT effectiveBackgroundChanged();
    Q_EMIT currentGlassOpacityChanged();
    updateNeedsAudio();
}

void Theme::setReduceTransparency(bool on) {
    if (on == m_reduceTransparency)
        return;
    m_reduceTransparency = on;
    Q_EMIT effectiveBackgroundChanged();
}

void Theme::setFrostedGlassOpacity(double v) {
    v = clampOpacity(v);
    if (v == m_frostedGlassOpacity)
        return;
    m_frostedGlassOpacity = v;
    m_prefs.setValue(Key::frostedGlassOpacity, v);
    Q_EMIT frostedGlassOpacityChanged();
    Q_EMIT currentGlassOpacityChanged();
}

void Theme::setLiquidGlassOpacity(double v) {
    v = clampOpacity(v);
    if (v == m_liquidGlassOpacity)
        return;
    m_liquidGlassOpacity = v;
    m_prefs.setValue(Key::liquidGlassOpacity, v);
    Q_EMIT liquidGlassOpacityChanged();
    Q_EMIT currentGlassOpacityChanged();
}

void Theme::setGlassReflection(bool on) {
    if (on == m_glassReflection)
        return;
    m_glassReflection = on;
    m_prefs.setValue(Key::glassReflection, on);
    Q_EMIT glassReflectionChanged();
}

void Theme::setEdgeReflection(bool on) {
    if (on == m_edgeReflection)
        return;
    m_edgeReflection = on;
    m_prefs.setValue(Key::edgeReflection, on);
    Q_EMIT edgeReflectionChanged();
    updateNeedsAudio();
}

void Theme::writeCurrentID(const QString& id) {
    m_prefs.setValue(Key::skinID, id);
    // Remembered so that turning the album colours off returns to the last preset.
    if (id != kAlbumSkinID)
        m_prefs.setValue(Key::lastFixedSkinID, id);
}

void Theme::setCurrentID(const QString& id) {
    // Written even when unchanged, so that "lastFixedSkinID" always follows the last preset.
    writeCurrentID(id);
    if (id == m_currentID)
        return;
    m_currentID = id;
    Q_EMIT currentIDChanged();
    Q_EMIT coloursChanged();
}

void Theme::setInkID(const QString& id) {
    if (id == m_inkID)
        return;
    m_inkID = id;
    m_prefs.setValue(Key::inkID, id);
    Q_EMIT inkIDChanged();
    Q_EMIT coloursChanged();
}

void Theme::setPositionID(const QString& id) {
    if (id == m_positionID)
        return;
    m_positionID = id;
    m_prefs.setValue(Key::positionID, id);
    Q_EMIT positionIDChanged();
}

void Theme::setVizID(const QString& id) {
    if (id == m_vizID)
        return;
    m_vizID = id;
    m_prefs.setValue(Key::vizID, id);
    Q_EMIT vizIDChanged();
}

void Theme::setShowVisualizer(bool on) {
    if (on == m_showVisualizer)
        return;
    m_showVisualizer = on;
    m_prefs.setValue(Key::showVisualizer, on);
    Q_EMIT showVisualizerChanged();
    updateNeedsAudio();
}

void Theme::setMotionSpeed(double speed) {
    if (!std::isfinite(speed) || speed <= 0 || speed == m_motionSpeed)
        return;
    m_motionSpeed = speed;
    m_prefs.setValue(Key::motionSpeed, speed);
    Q_EMIT motionSpeedChanged();
}

void Theme::setStyleID(const QString& id) {
    if (id == m_styleID)
        return;
    m_styleID = id;
    m_prefs.setValue(Key::styleID, id);
    Q_EMIT styleIDChanged();
}

void Theme::setGlow(double glow) {
    if (!std::isfinite(glow) || glow == m_glow)
        return;
    m_glow = glow;
    m_prefs.setValue(Key::glow, glow);
    Q_EMIT glowChanged();
}

void Theme::setCustomHSB(const HSB& hsb) {
    if (!std::isfinite(hsb.h) || !std::isfinite(hsb.s) || !std::isfinite(hsb.b) ||
        hsb == m_customHSB)
        return;
    m_customHSB = hsb;
    m_prefs.setValue(Key::customHSB, QVariantList{hsb.h, hsb.s, hsb.b});
    Q_EMIT customHSBChanged();
    Q_EMIT coloursChanged();
}

QList<double> Theme::customHSBList() const {
    return {m_customHSB.h, m_customHSB.s, m_customHSB.b};
}

void Theme::setCustomHSBList(const QList<double>& list) {
    if (list.size() == 3)
        setCustomHSB({list[0], list[1], list[2]});
}

// Derived values -------------------------------------------------------------------------------

bool Theme::needsAudioFor(bool showVisualizer, bool edgeReflection,
                          const QString& backgroundStyleID) {
    if (showVisualizer)
        return true;
    if (!edgeReflection)
        return false;
    // Only the frosted glass lights its edges with the music.
    return effectiveBackground(backgroundStyleID) == PlayerBackground::frosted;
}

bool Theme::needsAudio() const {
    return m_needsAudio;
}

void Theme::updateNeedsAudio() {
    const bool needs = needsAudioFor(m_showVisualizer, m_edgeReflection, m_backgroundStyleID);
    if (needs == m_needsAudio)
        return;
    m_needsAudio = needs;
    Q_EMIT needsAudioChanged();
}

QString Theme::effectiveBackgroundID() const {
    return m_reduceTransparency ? rawValue(PlayerBackground::solid)
                                : rawValue(effectiveBackground(m_backgroundStyleID));
}

double Theme::currentGlassOpacity() const {
    return m_backgroundStyleID == rawValue(PlayerBackground::liquid) ? m_liquidGlassOpacity
                                                                     : m_frostedGlassOpacity;
}

void Theme::setCurrentGlassOpacity(double v) {
    if (m_backgroundStyleID == rawValue(PlayerBackground::liquid))
        setLiquidGlassOpacity(v);
    else
        setFrostedGlassOpacity(v);
}

double Theme::frostedDensity() const {
    const double v = std::clamp(m_frostedGlassOpacity, 0.0, 1.0);
    return v <= 0.5 ? 2.0 * v * kMidDensity : (2.0 * v - 1.0) * kUpperDensitySpan + kMidDensity;
}

double Theme::frostedBlurStrength() const {
    const double v = m_frostedGlassOpacity;
    if (v >= 0.5)
        return std::min(frostedDensity() * 1.6, 1.0);
    return 2.0 * std::max(v, 0.0) * kBlurSpan + kMinBlur;
}

Skin Theme::currentSkin() const {
    if (m_currentID == kAlbumSkinID) {
        const HSB c = m_glide.palette() && !m_glide.palette()->isEmpty()
                          ? m_glide.palette()->first()
                          : m_customHSB;
        return {kAlbumSkinID, QStringLiteral("Album art"), c.h, c.s, c.b};
    }
    if (m_currentID == kCustomSkinID)
        return {kCustomSkinID, QStringLiteral("Custom"), m_customHSB.h, m_customHSB.s,
                m_customHSB.b};
    return skinWithID(m_currentID).value_or(skins().first());
}

QColor Theme::customColor() const {
    return toColor(m_customHSB);
}

void Theme::setCustomColor(const QColor& picked) {
    const QColor rgb = picked.isValid() ? picked.toRgb() : QColor(Qt::white);
    const HSB hsb = rgbToHsb({rgb.redF(), rgb.greenF(), rgb.blueF()});
    setCustomHSB(
        {hsb.h, std::max(hsb.s, kMinCustomSaturation), std::max(hsb.b, kMinCustomBrightness)});
    setCurrentID(kCustomSkinID);
}

QColor Theme::inkColor() const {
    if (m_inkID == u"white")
        return Qt::white;
    if (m_inkID == u"black")
        return Qt::black;
    if (const std::optional<Skin> skin = skinWithID(m_inkID))
        return skin->color();
    // "auto": cover colours change with every track, so text stays white over them.
    return m_currentID == kAlbumSkinID ? QColor(Qt::white) : currentSkin().color();
}

QVariantList Theme::inkChoices() const {
    const QColor autoColour =
        m_currentID == kAlbumSkinID ? QColor(Qt::white) : currentSkin().color();
    QVariantList rows{choice(QStringLiteral("auto"), QStringLiteral("Auto"), autoColour),
                      choice(QStringLiteral("white"), QStringLiteral("White"), Qt::white),
                      choice(QStringLiteral("black"), QStringLiteral("Black"), Qt::black)};
    for (const Skin& s : skins())
        rows.append(choice(s.id, s.name, s.color()));
    return rows;
}

QVariantList Theme::skinChoices() const {
    QVariantList rows;
    for (const Skin& s : skins())
        rows.append(choice(s.id, s.name, s.color()));
    return rows;
}

QVariantList Theme::backgroundChoices() const {
    QVariantList rows;
    for (PlayerBackground b : availableBackgrounds())
        rows.append(
            QVariantMap{{QStringLiteral("id"), rawValue(b)}, {QStringLiteral("title"), title(b)}});
    return rows;
}

QVariantList Theme::playerStyleChoices() const {
    QVariantList rows;
    for (PlayerStyle s : allPlayerStyles())
        rows.append(
            QVariantMap{{QStringLiteral("id"), rawValue(s)}, {QStringLiteral("title"), title(s)}});
    return rows;
}

Theme::Motion Theme::motion(double duration, double delay) const {
    QEasingCurve easeOut(QEasingCurve::BezierSpline);
    easeOut.addCubicBezierSegment(QPointF(0.0, 0.0), QPointF(0.58, 1.0), QPointF(1.0, 1.0));
    return {duration / m_motionSpeed, delay / m_motionSpeed, easeOut};
}

int Theme::motionMs(double seconds) const {
    return int(std::lround(seconds / m_motionSpeed * 1000.0));
}

// Artwork colours ------------------------------------------------------------------------------

void Theme::setArtPalette(std::optional<Palette> palette) {
    if (palette && palette->isEmpty())
        palette.reset();
    m_lastArtwork = palette;
    const std::optional<Palette>& shown = m_glide.palette();
    const Palette current = shown && !shown->isEmpty() ? *shown : Palette{m_customHSB};
    // No cover means white, keeping the hue so a later glide starts from a sensible place.
    const Palette target = palette ? *palette : Palette{HSB{current.first().h, 0.0, 1.0}};
    if (albumColours() && current != target) {
        m_glide.glideTo(current, target);
        return;
    }
    // Without the album skin the palette is kept quietly, for when the user switches to it.
    if (m_glide.jumpTo(target) && albumColours()) {
        Q_EMIT artPaletteChanged();
        Q_EMIT coloursChanged();
    }
}

HSB Theme::colorAt(std::optional<double> hue, double t) const {
    if (!std::isfinite(t))
        t = 0.5;
    const Skin skin = currentSkin();
    const std::optional<Palette>& art = m_glide.palette();
    if (m_currentID == kAlbumSkinID && art && !art->isEmpty()) {
        const Palette& palette = *art;
        HSB c;
        if (palette.size() > 1) {
            c = m_glide.rampAt(t);
        } else {
            const HSB& only = palette.first();
            c = {(0.5 - t) * kAlbumHueSweep + only.h, only.s, only.b};
        }
        c.s = std::min(c.s / 0.95, 1.0);
        return c;
    }
    // Fixed colours: the lows lean one way round the wheel, the highs the other.
    const double base = hue.value_or(skin.hue);
    return {(0.5 - t) * kFixedHueSweep + base, std::min(skin.sat / 0.95, 1.0), skin.bri};
}

QColor Theme::colorAtPosition(double t) const {
    return toColor(colorAt(std::nullopt, t));
}

QList<QVector4D> Theme::shaderRamp(int from, int to) const {
    QList<QVector4D> out;
    const int size = PaletteGlide::rampSize;
    for (int i = std::max(from, 0); i < std::min(to, size); ++i) {
        HSB c = colorAt(std::nullopt, double(i) / double(size - 1));
        c.h -= std::floor(c.h);
        c.s = std::min(c.s * 0.95, 1.0);
        const RGB rgb = hsbToRgb(c);
        out.append(QVector4D(float(rgb.r), float(rgb.g), float(rgb.b), 1.0f));
    }
    return out;
}

bool Theme::isColourlessCover() const {
    const std::optional<Palette>& art = m_glide.palette();
    return m_currentID == kAlbumSkinID && art && art->size() == 1 && art->first().s < 0.05 &&
           art->first().b > 0.9;
}

QList<QColor> Theme::paletteColours() const {
    QList<QColor> out;
    if (const std::optional<Palette>& art = m_glide.palette()) {
        for (const HSB& c : *art)
            out.append(toColor(c));
    }
    return out;
}

void Theme::setAlbumColours(bool on) {
    if (on) {
        setCurrentID(kAlbumSkinID);
        setArtPalette(m_lastArtwork);
    } else {
        setCurrentID(m_prefs.stringValue(Key::lastFixedSkinID, kCustomSkinID));
    }
}

} // namespace MirlPlayer
