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

void ReflectionView::paint(QPainter* painter) {
    if (!m_store || !m_theme)
        return;
    const ReflectionKind kind =
        m_kind == QLatin1String("edge") ? ReflectionKind::edge : ReflectionKind::glass;
    VizConfig* viz = config();
    const ReflectionSettings s = reflectionSettings(
        kind, m_libraryOpen, [viz](const QString& key) { return viz->value(key); });
    const double w = width();
    const double h = height();
    // Below the threshold nothing is drawn and the envelope's time stands still.
    if (s.amount <= 0.001 || w <= 0 || h <= 0)
        return;
    const std::vector<double>& mags =
        m_envelope.update(m_store->levels(), pools, s.attack, s.release, m_clock.now());
    const EQTuning& t = EQTuning::shared();
    const LightTuning tuning{t.floorBright, t.peakBright, t.peakWhite};
    Theme* theme = m_theme;
    const auto colourAt = [theme, &s, &tuning](double p, double m) {
        return lightColour(theme->colorAt(std::nullopt, p), m, s.colour, tuning);
    };
    const ReflectionFrame frame = kind == ReflectionKind::glass
                                      ? glassReflection(mags, w, h, s, colourAt)
                                      : edgeReflection(mags, w, h, s, colourAt);

    // The texture is smaller than the layer: the painter scales, and the image is drawn 1:1.
    const QImage& image = m_raster.draw(frame, textureSize(), QSizeF(w, h), m_cornerRadius);
    painter->drawImage(QRectF(0, 0, w, h), image);
}

} // namespace MirlPlayer
