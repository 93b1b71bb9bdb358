#include "look/RoundedMesh.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace MirlPlayer {

namespace {

MeshVertex vertex(QPointF p, MeshColour c) {
    const auto byte = [](float v) {
        return std::uint8_t(std::clamp(v, 0.0f, 1.0f) * 255.0f + 0.5f);
    };
    return {float(p.x()), float(p.y()), byte(c.r), byte(c.g), byte(c.b), byte(c.a)};
}

// The outline of a rounded rectangle, clockwise from the top left corner: the arc of each
// corner by the directions in `arc` (a quarter turn, from pointing left to pointing up).
void outline(std::vector<QPointF>& out, const QRectF& r, double radius,
             const std::vector<QPointF>& arc) {
    out.clear();
    const QPointF centres[4] = {{r.left() + radius, r.top() + radius},
                                {r.right() - radius, r.top() + radius},
                                {r.right() - radius, r.bottom() - radius},
                                {r.left() + radius, r.bottom() - radius}};
    for (int corner = 0; corner < 4; ++corner)
        for (const QPointF& d : arc) {
            // A quarter turn per corner: (x, y) -> (-y, x).
            QPointF turned = d;
            for (int q = 0; q < corner; ++q)
                turned = QPointF(-turned.y(), turned.x());
            out.push_back(centres[corner] + turned * radius);
        }
}

} // namespace

void RoundedMesh::clear() {
    m_vertices.clear();
    m_indices.clear();
}

void RoundedMesh::addRoundedRect(const QRectF& rect, double radius, double fringe,
                                 const Paint& paint, const Bend& bend) {
    if (!(rect.width() > 0) || !(rect.height() > 0))
        return;
    const double h = std::max(fringe, 0.0) * 0.5;
    radius = std::clamp(radius, 0.0, std::min(rect.width(), rect.height()) * 0.5);
    // A corner narrower than the soft edge is not seen: such a shape (a bar one pixel wide) is
    // drawn square, with a third of the triangles for a rasteriser to set up.
    if (radius < 2 * h)
        radius = 0;
    // The inner ring half a fringe inside the edge (a thin shape collapses onto its middle),
    // the outer one half a fringe outside; both share the corners' centres.
    const QPointF mid = rect.center();
    const double ix = std::min(h, rect.width() * 0.5), iy = std::min(h, rect.height() * 0.5);
    const QRectF inner = rect.adjusted(ix, iy, -ix, -iy);
    const QRectF outer = rect.adjusted(-h, -h, h, h);
    const double innerRadius =
        std::clamp(radius - h, 0.0, std::min(inner.width(), inner.height()) * 0.5);
    // Enough steps that the arc strays less than a tenth of a unit from the circle.
    const int segments =
        radius > 0 ? std::clamp(int(std::ceil(2 * std::sqrt(radius + h))), 1, 16) : 0;
    if (segments != m_segments || m_arc.empty()) {
        m_segments = segments;
        m_arc.clear();
        for (int k = 0; k <= segments; ++k) {
            const double a = std::numbers::pi * (1.0 + 0.5 * k / std::max(segments, 1));
            m_arc.emplace_back(std::cos(a), std::sin(a));
        }
    }
    outline(m_inner, inner, innerRadius, m_arc);
    outline(m_outer, outer, radius + h, m_arc);
    if (bend) {
        for (std::size_t k = 0; k < m_inner.size(); ++k) {
            const std::size_t next = (k + 1) % m_inner.size();
            const double a = bend(m_inner[k].x(), m_inner[k].y());
            const double b = bend(m_inner[next].x(), m_inner[next].y());
            if (!((a < 0 && b > 0) || (a > 0 && b < 0)))
                continue;
            // The outer ring crosses at its own place, so the fringe keeps to one side too.
            const double c = bend(m_outer[k].x(), m_outer[k].y());
            const double d = bend(m_outer[next].x(), m_outer[next].y());
            const auto at = [](QPointF p, QPointF q, double s) { return p + (q - p) * s; };
            const double so = c != d ? std::clamp(c / (c - d), 0.0, 1.0) : 0.5;
            m_inner.insert(m_inner.begin() + long(k) + 1,
                           at(m_inner[k], m_inner[next], a / (a - b)));
            m_outer.insert(m_outer.begin() + long(k) + 1, at(m_outer[k], m_outer[next], so));
            ++k;
        }
    }
    const std::size_t n = m_inner.size();
    const std::size_t base = m_vertices.size();
    if (base + 1 + 2 * n > 0xffff)
        return;
    m_vertices.push_back(vertex(mid, paint(mid.x(), mid.y())));
    for (const QPointF& p : m_inner)
        m_vertices.push_back(vertex(p, paint(p.x(), p.y())));
    for (const QPointF& p : m_outer)
        m_vertices.push_back(vertex(p, {0, 0, 0, 0}));
    const auto index = [base](std::size_t i) { return std::uint16_t(base + i); };
    for (std::size_t k = 0; k < n; ++k) {
        const std::size_t next = (k + 1) % n;
        const std::size_t in0 = 1 + k, in1 = 1 + next, out0 = 1 + n + k, out1 = 1 + n + next;
        m_indices.insert(m_indices.end(),
                         {index(0), index(in0), index(in1), index(in0), index(out0), index(out1),
                          index(in0), index(out1), index(in1)});
    }
}

} // namespace MirlPlayer
