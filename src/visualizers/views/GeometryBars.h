#pragma once

#include "look/RoundedMesh.h"
#include "visualizers/views/SpectrumSource.h"

#include <QPointer>
#include <QQuickItem>

namespace MirlPlayer {

// `BarsEQ` (or, with `mirrored`, `MirrorEQ`) as one mesh of coloured triangles: every bar a
// rounded rectangle with a soft edge, all in one geometry node and one draw call. Nothing is
// rasterised on the processor or uploaded as a picture; a frame sends the bars' corners. Needs a
// scene graph that draws geometry; under the software one the painted views stand in.
class GeometryBars : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::SpectrumSource* source READ source WRITE setSource NOTIFY sourceChanged)
    Q_PROPERTY(bool mirrored MEMBER m_mirrored NOTIFY mirroredChanged)
public:
    explicit GeometryBars(QQuickItem* parent = nullptr);

    SpectrumSource* source() const { return m_source; }
    void setSource(SpectrumSource* source);

Q_SIGNALS:
    void sourceChanged();
    void mirroredChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

private:
    QPointer<SpectrumSource> m_source;
    QList<QMetaObject::Connection> m_connections;
    bool m_mirrored = false;
    RoundedMesh m_mesh;
};

} // namespace MirlPlayer
