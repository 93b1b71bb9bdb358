#include "panel/ReflectionView.h"

#include "audio/EQTuning.h"
#include "audio/LevelsStore.h"
#include "look/Reflection.h"
#include "look/Theme.h"
#include "visualizers/VizConfig.h"

#include <QPainter>
#include <QQuickWindow>

namespace MirlPlayer {

ReflectionView::ReflectionView(QQuickItem* parent)
    : QQuickPaintedItem(parent) {
    setOpaquePainting(false);
    setAcceptedMouseButtons(Qt::NoButton);
    setAcceptHoverEvents(false);
}

void ReflectionView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    updateTextureSize();
}

void ReflectionView::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickPaintedItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        updateTextureSize();
}

void ReflectionView::updateTextureSize() {
    const double dpr = window() ? window()->effectiveDevicePixelRatio() : 1.0;
    const QSize half = (size() * dpr * 0.5).toSize();
    setTextureSize(half.expandedTo(QSize(1, 1)));
}

void ReflectionView::setKind(const QString& kind) {
    if (kind == m_kind)
        return;
    m_kind = kind;
    m_envelope = {}; // a light that leaves and returns starts from dark
    Q_EMIT kindChanged();
    update();
}

void ReflectionView::setStore(LevelsStore* store) {
    if (store == m_store)
        return;
    if (m_store)
        disconnect(m_store, nullptr, this, nullptr);
    m_store = store;
    if (store)
        connect(store, &LevelsStore::levelsChanged, this, [this] { update(); });
    Q_EMIT storeChanged();
    update();
}

void ReflectionView::setTheme(Theme* theme) {
    if (theme == m_theme)
        return;
    m_theme = theme;
    Q_EMIT themeChanged();
    update();
}

VizConfig* ReflectionView::config() const {
    return m_config ? m_config.data() : &VizConfig::shared();
}

void ReflectionView::setConfig(VizConfig* config) {
    if (config == m_config)
        return;
    m_config = config;
    Q_EMIT configChanged();
    update();
}

void ReflectionView::setGlass(PlayerBackdrop* glass) {
    if (glass == m_glass)
        return;
    if (m_glass)
        disconnect(m_glass, nullptr, this, nullptr);
    m_glass = glass;
    if (glass)
        connect(glass, &PlayerBackdrop::changed, this, [this] { update(); });
    Q_EMIT glassChanged();
    update();
}

ReflectionFrame ReflectionView::nextFrame() {
    if (!m_store || !m_theme)
        return {};
    const ReflectionKind kind =
        m_kind == QLatin1String("edge") ? ReflectionKind::edge : ReflectionKind::glass;
    VizConfig* viz = config();
    const ReflectionSettings s = reflectionSettings(
        kind, m_libraryOpen, [viz](const QString& key) { return viz->value(key); });
    // Below the threshold no light is drawn and the envelope's time stands still.
    if (s.amount <= 0.001)
        return {};
    const std::vector<double>& mags =
        m_envelope.update(m_store->levels(), pools, s.attack, s.release, m_clock.now());
    const EQTuning& t = EQTuning::shared();
    const LightTuning tuning{t.floorBright, t.peakBright, t.peakWhite};
    Theme* theme = m_theme;
    const auto colourAt = [theme, &s, &tuning](double p, double m) {
        return lightColour(theme->colorAt(std::nullopt, p), m, s.colour, tuning);
    };
    return kind == ReflectionKind::glass ? glassReflection(mags, width(), height(), s, colourAt)
                                         : edgeReflection(mags, width(), height(), s, colourAt);
}

void ReflectionView::paint(QPainter* painter) {
    if (width() <= 0 || height() <= 0)
        return;
    std::optional<ReflectionRaster::Glass> glass;
    if (m_glass) {
        const QColor c = m_glass->frostAndVeil();
        const float a = c.alphaF();
        glass = ReflectionRaster::Glass{c.redF() * a,
                                        c.greenF() * a,
                                        c.blueF() * a,
                                        a,
                                        float(m_glass->reflectionOpacity()),
                                        float(m_glass->sheenOpacity())};
    }
    const ReflectionFrame frame = nextFrame();
    if (!glass && frame.blobs.empty() && !frame.wash)
        return;
    // The texture is smaller than the layer: the painter scales, and the image, in the texture's
    // own format, is copied 1:1.
    const QImage& image = m_raster.draw(frame, textureSize(), size(), m_cornerRadius, glass);
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    painter->drawImage(QRectF(QPointF(0, 0), size()), image);
}

} // namespace MirlPlayer
