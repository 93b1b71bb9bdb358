#pragma once

#include "audio/LevelsStore.h"
#include "look/PlayerBackdrop.h"
#include "look/ReflectionRaster.h"
#include "look/Theme.h"
#include "panel/ReflectionLight.h"
#include "visualizers/VizConfig.h"

#include <QPointer>
#include <QQuickItem>

namespace MirlPlayer {

// The music's light in the frosted glass: soft blobs of additive light from the band levels,
// along the bottom edge ("glass") or around the rim ("edge"). Redraws on every publish of the
// levels and on nothing else; the envelope it owns lives as long as this layer is on screen.
// Takes no mouse events. Soft light has no edge to lose: it is rasterised (ReflectionRaster) at
// half the resolution in each direction, a quarter of the pixels to fill and to upload, and
// shown two screen pixels to a picture pixel, unfiltered: a filtered scale costs a software
// rasteriser four reads a pixel over the whole card and shows nothing more in soft light. The
// rounded corners are then cut by the node's outline at full resolution, not by the picture.
class ReflectionView : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QString kind READ kind WRITE setKind NOTIFY kindChanged)
    Q_PROPERTY(MirlPlayer::LevelsStore* store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(MirlPlayer::Theme* theme READ theme WRITE setTheme NOTIFY themeChanged)
    Q_PROPERTY(MirlPlayer::VizConfig* config READ config WRITE setConfig NOTIFY configChanged)
    Q_PROPERTY(bool libraryOpen MEMBER m_libraryOpen NOTIFY libraryOpenChanged)
    // The light stays inside the shape's rounded corners.
    Q_PROPERTY(double cornerRadius MEMBER m_cornerRadius NOTIFY cornerRadiusChanged)
    // The glass to draw the light into (frost, veil and sheen), so that both are one picture;
    // null draws the light alone.
    Q_PROPERTY(MirlPlayer::PlayerBackdrop* glass READ glass WRITE setGlass NOTIFY glassChanged)
    // Points of blur the layer asks for (18 in the library, else 0).
    Q_PROPERTY(double blur READ blur NOTIFY libraryOpenChanged)
public:
    static constexpr int pools = ReflectionLight::pools;

    explicit ReflectionView(QQuickItem* parent = nullptr);

    QString kind() const { return m_kind; }
    void setKind(const QString& kind);
    LevelsStore* store() const { return m_store; }
    void setStore(LevelsStore* store);
    Theme* theme() const { return m_theme; }
    void setTheme(Theme* theme);
    VizConfig* config() const;
    void setConfig(VizConfig* config);
    double blur() const { return m_libraryOpen ? 18 : 0; }
    PlayerBackdrop* glass() const { return m_glass; }
    void setGlass(PlayerBackdrop* glass);

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;

Q_SIGNALS:
    void kindChanged();
    void storeChanged();
    void themeChanged();
    void configChanged();
    void libraryOpenChanged();
    void cornerRadiusChanged();
    void glassChanged();

private:
    // This redraw's picture, or null when there is nothing to draw.
    const QImage* picture(QSize pixels, double cornerRadius);

    QString m_kind = QStringLiteral("glass");
    QPointer<LevelsStore> m_store;
    QPointer<Theme> m_theme;
    QPointer<VizConfig> m_config;
    QPointer<PlayerBackdrop> m_glass;
    bool m_libraryOpen = false;
    double m_cornerRadius = 0;
    ReflectionLight m_light;
    ReflectionRaster m_raster;
};

} // namespace MirlPlayer
