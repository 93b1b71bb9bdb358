#pragma once

#include <QRectF>
#include <cstdint>
#include <functional>
#include <vector>

namespace MirlPlayer {

// A point of a coloured triangle mesh, laid out as Qt Quick's coloured 2D point: position, then
// a premultiplied colour in bytes.
struct MeshVertex {
    float x, y;
    std::uint8_t r, g, b, a;
};

// Premultiplied colour in 0...1.
struct MeshColour {
    float r, g, b, a;
};

// Triangles for the scene graph's vertex-colour material: many shapes in one geometry, drawn in
// one call. Shapes are rounded rectangles with an antialiased edge: a fan inside, and a fringe
// one device pixel wide across the edge that fades to clear, so no multisampling is needed.
class RoundedMesh {
public:
    // The colour of the shape at a point; a colour that changes linearly across the shape
    // (a gradient) is drawn exactly where it is linear on each triangle.
    using Paint = std::function<MeshColour(double x, double y)>;
    // Where a piecewise-linear paint bends: the outline gets a point wherever this changes sign,
    // so that no triangle of the fan straddles the bend. The bend must pass the centre.
    using Bend = std::function<double(double x, double y)>;

    void clear();
    // `fringe` is the width of the soft edge (one device pixel, in the shape's units).
    void addRoundedRect(const QRectF& rect, double radius, double fringe, const Paint& paint,
                        const Bend& bend = {});

    const std::vector<MeshVertex>& vertices() const { return m_vertices; }
    const std::vector<std::uint16_t>& indices() const { return m_indices; }

private:
    std::vector<MeshVertex> m_vertices;
    std::vector<std::uint16_t> m_indices;
    std::vector<QPointF> m_inner;
    std::vector<QPointF> m_outer;
    std::vector<QPointF> m_arc; // the corners' directions for `m_segments` steps
    int m_segments = -1;
};

} // namespace MirlPlayer
