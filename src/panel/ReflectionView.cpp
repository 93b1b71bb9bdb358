#include "panel/ReflectionView.h"

#include "audio/LevelsStore.h"
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
    m_light.reset();
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

void ReflectionView::paint(QPainter* painter) {
    if (width() <= 0 || height() <= 0)
        return;
    std::optional<ReflectionRaster::Glass> glass;
    if (m_glass)
        glass = glassOf(*m_glass);
    const ReflectionFrame frame =
        m_light.next(m_store, m_theme, *config(), m_kind, m_libraryOpen, size());
    if (!glass && frame.blobs.empty() && !frame.wash)
        return;
    // The texture is smaller than the layer: the painter scales, and the image, in the texture's
    // own format, is copied 1:1.
    const QImage& image = m_raster.draw(frame, textureSize(), size(), m_cornerRadius, glass);
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    painter->drawImage(QRectF(QPointF(0, 0), size()), image);
}

} // namespace MirlPlayer
