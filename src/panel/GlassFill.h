#pragma once

#include "look/PlayerBackdrop.h"
#include "look/RoundedMesh.h"

#include <QPointer>
#include <QQuickItem>

namespace MirlPlayer {

// The frosted glass's body as one paint: the frost, the dark veil over it and the diagonal sheen,
// stacked into the colours of one triangle mesh inside the shape's rounded corners, with an
// antialiased edge. One pass over the shape's pixels where three layers took three; the mesh is
// built again only when the shape or the look changes, never for a frame of the music. Needs a
// scene graph that draws geometry (not the software one).
class GlassFill : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::PlayerBackdrop* rules READ rules WRITE setRules NOTIFY rulesChanged)
    Q_PROPERTY(
        double cornerRadius READ cornerRadius WRITE setCornerRadius NOTIFY cornerRadiusChanged)
public:
    explicit GlassFill(QQuickItem* parent = nullptr);

    PlayerBackdrop* rules() const { return m_rules; }
    void setRules(PlayerBackdrop* rules);
    double cornerRadius() const { return m_cornerRadius; }
    void setCornerRadius(double radius);

Q_SIGNALS:
    void rulesChanged();
    void cornerRadiusChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    void rebuild();

    QPointer<PlayerBackdrop> m_rules;
    double m_cornerRadius = 0;
    RoundedMesh m_mesh;
    bool m_meshChanged = true;
};

} // namespace MirlPlayer
