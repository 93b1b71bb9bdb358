#include "visualizers/views/GeometryBars.h"

#include "visualizers/views/BarFrame.h"
#include "visualizers/views/MeshNode.h"

#include <QQuickWindow>

namespace MirlPlayer {

GeometryBars::GeometryBars(QQuickItem* parent)
    : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(this, &GeometryBars::mirroredChanged, this, &QQuickItem::update);
    connect(this, &QQuickItem::widthChanged, this, &QQuickItem::update);
    connect(this, &QQuickItem::heightChanged, this, &QQuickItem::update);
}

void GeometryBars::setSource(SpectrumSource* source) {
    if (m_source == source)
        return;
    m_source = source;
    SpectrumSource::refollow(m_connections, source, this, [this] { update(); });
    update();
    Q_EMIT sourceChanged();
}

QSGNode* GeometryBars::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    m_mesh.clear();
    if (const auto frame = BarFrame::of(m_source, width(), height())) {
        const BarShape shape = frame->shape(*m_source, m_mirrored);
        const double fringe = 1.0 / (window() ? window()->effectiveDevicePixelRatio() : 1.0);
        for (int i = 0; i < int(frame->levels.size()); ++i) {
            const QColor c = frame->colour(i); // opaque
            const MeshColour colour{c.redF(), c.greenF(), c.blueF(), 1.0f};
            m_mesh.addRoundedRect(shape.rect(i, frame->levels[i]), shape.radius, fringe,
                                  [colour](double, double) { return colour; });
        }
    }
    return updateMeshNode(old, m_mesh);
}

} // namespace MirlPlayer
