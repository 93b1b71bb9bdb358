#include "panel/RoundedPictureNode.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGTexture>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace MirlPlayer {

namespace {

// Points per quarter of a corner: the arc strays well under a pixel at the panel's radii.
constexpr int arcSteps = 8;

} // namespace

RoundedPictureNode::RoundedPictureNode()
    : m_geometry(QSGGeometry::defaultAttributes_TexturedPoint2D(), 0) {
    m_geometry.setDrawingMode(QSGGeometry::DrawTriangleStrip);
    setGeometry(&m_geometry);
    m_material.setFiltering(QSGTexture::Nearest);
    setMaterial(&m_material);
}

RoundedPictureNode::~RoundedPictureNode() = default;

void RoundedPictureNode::setShape(QSizeF size, double cornerRadius) {
    const double r = std::clamp(cornerRadius, 0.0, std::min(size.width(), size.height()) / 2);
    if (size == m_size && r == m_radius)
        return;
    m_size = size;
    m_radius = r;
    const double w = size.width(), h = size.height();
    // Down the left side, each point paired with its mirror on the right: the top corner's arc
    // from the top edge to the left one, then the bottom corner's from the left edge down.
    m_geometry.allocate(4 * (arcSteps + 1));
    QSGGeometry::TexturedPoint2D* v = m_geometry.vertexDataAsTexturedPoint2D();
    const auto pair = [&](double x, double y) {
        v[0].set(float(x), float(y), float(x / w), float(y / h));
        v[1].set(float(w - x), float(y), float(1 - x / w), float(y / h));
        v += 2;
    };
    for (int k = 0; k <= arcSteps; ++k) {
        const double a = std::numbers::pi / 2 * k / arcSteps;
        pair(r - r * std::sin(a), r - r * std::cos(a));
    }
    for (int k = 0; k <= arcSteps; ++k) {
        const double a = std::numbers::pi / 2 * k / arcSteps;
        pair(r - r * std::cos(a), h - r + r * std::sin(a));
    }
    markDirty(QSGNode::DirtyGeometry);
}

void RoundedPictureNode::setPicture(QQuickWindow& window, const QImage& picture) {
    std::unique_ptr<QSGTexture> texture(
        window.createTextureFromImage(picture, QQuickWindow::TextureHasAlphaChannel));
    m_material.setTexture(texture.get());
    m_texture = std::move(texture);
    markDirty(QSGNode::DirtyMaterial);
}

} // namespace MirlPlayer
