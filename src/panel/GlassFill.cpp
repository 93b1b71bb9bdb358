#include "panel/GlassFill.h"

#include "visualizers/views/MeshNode.h"

#include <QQuickWindow>

namespace MirlPlayer {

GlassFill::GlassFill(QQuickItem* parent)
    : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

void GlassFill::setRules(PlayerBackdrop* rules) {
    if (rules == m_rules)
        return;
    if (m_rules)
        disconnect(m_rules, nullptr, this, nullptr);
    m_rules = rules;
    if (rules)
        connect(rules, &PlayerBackdrop::changed, this, &GlassFill::rebuild);
    Q_EMIT rulesChanged();
    rebuild();
}

void GlassFill::setCornerRadius(double radius) {
    if (radius == m_cornerRadius)
        return;
    m_cornerRadius = radius;
    Q_EMIT cornerRadiusChanged();
    rebuild();
}

void GlassFill::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        rebuild();
}

void GlassFill::rebuild() {
    m_meshChanged = true;
    update();
}

QSGNode* GlassFill::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    if (!m_meshChanged)
        return old;
    m_meshChanged = false;
    m_mesh.clear();
    const double w = width(), h = height();
    if (m_rules && w > 0 && h > 0) {
        // The sheen runs from the top left to the bottom right: t is the share of that
        // diagonal, and the paint bends in the middle where the sheen is clear.
        const double norm = w * w + h * h;
        const auto along = [w, h, norm](double x, double y) { return (x * w + y * h) / norm; };
        PlayerBackdrop* rules = m_rules;
        const auto paint = [rules, along](double x, double y) {
            const QColor c = rules->frostedFill(along(x, y));
            const float a = c.alphaF();
            return MeshColour{c.redF() * a, c.greenF() * a, c.blueF() * a, a};
        };
        const double dpr = window() ? window()->effectiveDevicePixelRatio() : 1.0;
        m_mesh.addRoundedRect(QRectF(0, 0, w, h), m_cornerRadius, 1.0 / dpr, paint,
                              [along](double x, double y) { return along(x, y) - 0.5; });
    }
    return updateMeshNode(old, m_mesh);
}

} // namespace MirlPlayer
