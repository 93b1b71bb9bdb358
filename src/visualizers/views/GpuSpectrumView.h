#pragma once

#include "visualizers/views/SpectrumHistory.h"
#include "visualizers/views/SpectrumSource.h"

#include <QPointer>
#include <QQuickItem>

namespace MirlPlayer {

class GLSpectrumNode;

// A style drawn by an OpenGL render node. Its history moves once per publication of the levels,
// which is also when it asks for a frame; a change of the look, a tuning value or the size draws
// the same history again. Under a scene graph without OpenGL (software rendering) it draws
// nothing and says so once in the log.
class GpuSpectrumView : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::SpectrumSource* source READ source WRITE setSource NOTIFY sourceChanged)
public:
    explicit GpuSpectrumView(QQuickItem* parent = nullptr);
    ~GpuSpectrumView() override;

    SpectrumSource* source() const { return m_source; }
    void setSource(SpectrumSource* source);
    // What the next frame draws.
    virtual const SpectrumHistory& history() const = 0;

Q_SIGNALS:
    void sourceChanged();

protected:
    // Whether the style draws the stereo curve: it then counts itself among the curve's
    // readers while its source publishes levels (while it is on screen).
    virtual bool readsStereo() const { return false; }
    // One publication: take in the new data.
    virtual void advance() = 0;
    virtual GLSpectrumNode* createNode() = 0;
    // Hands the history (when `moved`) and this frame's values to the node.
    virtual void sync(GLSpectrumNode& node, bool moved) = 0;

    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    void updateStereoReading();

    QPointer<SpectrumSource> m_source;
    StereoStore* m_readingStereo = nullptr;
    QList<QMetaObject::Connection> m_connections;
    bool m_moved = true;
};

} // namespace MirlPlayer
