#include "visualizers/views/GpuSpectrumView.h"

#include "look/Theme.h"
#include "visualizers/views/GLSpectrumNode.h"
#include "visualizers/views/SpectrumSource.h"
#include "visualizers/views/VisualizerLog.h"

#include <QQuickWindow>
#include <QSGRendererInterface>

namespace MirlPlayer {

GpuSpectrumView::GpuSpectrumView(QQuickItem* parent)
    : QQuickItem(parent) {
    setFlag(ItemHasContents, true);
}

GpuSpectrumView::~GpuSpectrumView() {
    if (m_readingStereo)
        m_readingStereo->removeReader();
}

void GpuSpectrumView::setSource(SpectrumSource* source) {
    if (m_source == source)
        return;
    for (const auto& c : std::as_const(m_connections))
        disconnect(c);
    m_connections.clear();
    m_source = source;
    if (source) {
        m_connections = source->follow(
            this,
            [this] {
                advance();
                m_moved = true;
                update();
            },
            [this] { update(); });
        m_connections.append(connect(source, &SpectrumSource::inputsChanged, this,
                                     &GpuSpectrumView::updateStereoReading));
    }
    updateStereoReading();
    update();
    Q_EMIT sourceChanged();
}

void GpuSpectrumView::updateStereoReading() {
    StereoStore* store =
        readsStereo() && m_source && m_source->levelsStore() ? m_source->stereoStore() : nullptr;
    if (store == m_readingStereo)
        return;
    if (m_readingStereo)
        m_readingStereo->removeReader();
    m_readingStereo = store;
    if (store)
        store->addReader();
}

void GpuSpectrumView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    update();
}

QSGNode* GpuSpectrumView::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    const QSGRendererInterface* renderer = window() ? window()->rendererInterface() : nullptr;
    if (!renderer || renderer->graphicsApi() != QSGRendererInterface::OpenGL) {
        logNoGpuOnce("the scene graph does not render with OpenGL");
        delete old;
        return nullptr;
    }
    auto* node = static_cast<GLSpectrumNode*>(old);
    if (!node) {
        node = createNode();
        m_moved = true;
    }
    node->setRect(boundingRect());
    const qreal dpr = window()->effectiveDevicePixelRatio();
    const QRectF place = mapRectToScene(boundingRect());
    node->setPlace(QRectF(place.topLeft() * dpr, place.size() * dpr).toAlignedRect(),
                   window()->size() * dpr);
    if (m_source && m_source->theme())
        node->setRamp(m_source->theme()->shaderRamp());
    sync(*node, m_moved);
    m_moved = false;
    node->markDirty(QSGNode::DirtyMaterial);
    return node;
}

} // namespace MirlPlayer
