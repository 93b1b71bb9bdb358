#pragma once

#include <QSGGeometry>
#include <QSGGeometryNode>
#include <QSGTextureMaterial>
#include <QSizeF>
#include <memory>

class QImage;
class QQuickWindow;
class QSGTexture;

namespace MirlPlayer {

// A picture stretched over a rounded rectangle, cut by the outline at the screen's resolution
// and sampled without filtering, for a scene graph that draws geometry. The outline is a strip
// of horizontal bands, top to bottom, so every triangle spans the shape's width and a
// rasteriser meets few edges.
class RoundedPictureNode : public QSGGeometryNode {
public:
    RoundedPictureNode();
    ~RoundedPictureNode() override;

    void setShape(QSizeF size, double cornerRadius);
    // A new texture for every picture: the public scene graph has no upload into an old one,
    // and a picture of the card's glass is small.
    void setPicture(QQuickWindow& window, const QImage& picture);

private:
    QSGGeometry m_geometry;
    QSGTextureMaterial m_material;
    std::unique_ptr<QSGTexture> m_texture;
    QSizeF m_size;
    double m_radius = -1;
};

} // namespace MirlPlayer
