#include "panel/ReflectionView.h"

#include "audio/LevelsStore.h"
#include "look/Theme.h"
#include "panel/RoundedPictureNode.h"
#include "visualizers/VizConfig.h"

#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRendererInterface>
#include <QSGTexture>
#include <memory>

namespace MirlPlayer {

namespace {

// Under the software scene graph: the picture as a plain image node, whose texture, new with
// every picture, this node owns.
class PictureImageNode : public QSGNode {
public:
    explicit PictureImageNode(QQuickWindow& window)
        : m_image(window.createImageNode()) {
        m_image->setFiltering(QSGTexture::Linear);
        appendChildNode(m_image);
    }
    void set(QQuickWindow& window, const QRectF& rect, const QImage& picture) {
        std::unique_ptr<QSGTexture> texture(
            window.createTextureFromImage(picture, QQuickWindow::TextureHasAlphaChannel));
        m_image->setRect(rect);
        m_image->setTexture(texture.get());
        m_texture = std::move(texture);
    }

private:
    QSGImageNode* m_image;
    std::unique_ptr<QSGTexture> m_texture;
};

} // namespace

ReflectionView::ReflectionView(QQuickItem* parent)
    : QQuickItem(parent) {
    setFlag(ItemHasContents);
    setAcceptedMouseButtons(Qt::NoButton);
    setAcceptHoverEvents(false);
    connect(this, &ReflectionView::cornerRadiusChanged, this, &QQuickItem::update);
    connect(this, &ReflectionView::libraryOpenChanged, this, &QQuickItem::update);
}

void ReflectionView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    update();
}

void ReflectionView::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        update();
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

const QImage* ReflectionView::picture(QSize pixels, double cornerRadius) {
    std::optional<ReflectionRaster::Glass> glass;
    if (m_glass)
        glass = glassOf(*m_glass);
    const ReflectionFrame frame =
        m_light.next(m_store, m_theme, *config(), m_kind, m_libraryOpen, size());
    if (!glass && frame.blobs.empty() && !frame.wash)
        return nullptr;
    return &m_raster.draw(frame, pixels, size(), cornerRadius, glass);
}

QSGNode* ReflectionView::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    QQuickWindow* view = window();
    if (!view || width() <= 0 || height() <= 0) {
        delete old;
        return nullptr;
    }
    const QSize half = (size() * view->effectiveDevicePixelRatio() * 0.5).toSize();
    const bool geometry =
        view->rendererInterface()->graphicsApi() != QSGRendererInterface::Software;
    // Where the scene graph draws geometry the outline cuts the corners; the software one draws
    // rectangles, and the picture carries its own rounded, filtered edge.
    const QImage* image = picture(half.expandedTo(QSize(1, 1)), geometry ? 0 : m_cornerRadius);
    if (!image) {
        delete old;
        return nullptr;
    }
    if (geometry) {
        auto* node = static_cast<RoundedPictureNode*>(old);
        if (!node)
            node = new RoundedPictureNode;
        node->setShape(size(), m_cornerRadius);
        node->setPicture(*view, *image);
        return node;
    }
    auto* node = static_cast<PictureImageNode*>(old);
    if (!node)
        node = new PictureImageNode(*view);
    node->set(*view, boundingRect(), *image);
    return node;
}

} // namespace MirlPlayer
