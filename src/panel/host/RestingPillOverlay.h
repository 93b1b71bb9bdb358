#pragma once

#include "look/PlayerBackdrop.h"
#include "panel/PillPicture.h"
#include "panel/ReflectionLight.h"
#include "platform/PillLayer.h"
#include "visualizers/views/PixelEase.h"

#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <array>
#include <memory>

namespace MirlPlayer {

class LevelsStore;
class PlayerState;
class Theme;

// While the pill rests, it is drawn here and shown in a layer over the panel window, and the
// panel's scene holds still beneath it (`covering`): a level array then costs one small picture
// sent to the window system, not a frame of the whole scene graph. The moment the pill is to move
// or open, the layer goes and the scene, which drew the same pill all along, carries on.
class RestingPillOverlay : public QObject {
    Q_OBJECT
public:
    RestingPillOverlay(PlayerState& player, Theme& theme, std::unique_ptr<PillLayer> layer,
                       QObject* parent = nullptr);
    ~RestingPillOverlay() override;

    // The pill's shape in the window's coordinates (points), its corners and the window's
    // device pixel ratio.
    void setShape(const QRectF& shape, double cornerRadius, double devicePixelRatio);
    // The pill rests: closed, settled, on screen.
    void setResting(bool resting);
    bool covering() const { return m_covering; }

Q_SIGNALS:
    void coveringChanged();

private:
    void decide();
    // Draws and shows a frame now; false when the layer could not show it.
    bool present();
    void redraw();
    void schedule();
    void follow(bool on);
    void retarget();
    bool wanted() const;

    PlayerState& m_player;
    Theme& m_theme;
    std::unique_ptr<PillLayer> m_layer;
    PlayerBackdrop m_rules;
    ReflectionLight m_light;
    PillPicture m_picture;
    std::array<PixelEase, 4> m_meter;
    QPointer<LevelsStore> m_followed;
    QMetaObject::Connection m_levels;
    QRectF m_shape;
    double m_cornerRadius = 12;
    double m_dpr = 1;
    bool m_resting = false;
    bool m_covering = false;
    bool m_scheduled = false;
    bool m_broken = false;
};

} // namespace MirlPlayer
