#pragma once

#include "panel/SkeletonPanelGeometry.h"

#include <QImage>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QQuickImageProvider>
#include <QTimer>
#include <memory>

class QQuickView;
class QScreen;

namespace MirlPlayer {

class PlayerState;

// The artwork of the current track for QML's Image, under "image://artwork/<n>"; n changes with
// every new picture so that the view reloads it.
class ArtworkImageProvider final : public QQuickImageProvider {
public:
    ArtworkImageProvider();
    void setImage(const QImage& image);
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    QMutex m_mutex; // the view may ask from its image loader thread
    QImage m_image;
};

// A first, simple panel: one frameless, transparent, stays-on-top window across the top of the
// screen with the resting pill at the top centre. The pointer, read every 0.05 s, opens a card
// with artwork, title, artist, a timeline and the transport; away from the card it closes again.
// Clicks outside the pill or the open card fall through to the windows beneath.
class SkeletonPanel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool expanded READ expanded NOTIFY expandedChanged)
    Q_PROPERTY(QRectF pillRect READ pillRect NOTIFY geometryChanged)
    Q_PROPERTY(QRectF cardRect READ cardRect NOTIFY geometryChanged)
    Q_PROPERTY(QString artworkSource READ artworkSource NOTIFY artworkSourceChanged)
public:
    static constexpr int pointerInterval = 50; // ms

    explicit SkeletonPanel(PlayerState& player, QObject* parent = nullptr);
    ~SkeletonPanel() override;

    // Builds the window on `screen` (the primary screen when null), shows it and starts reading
    // the pointer. False when the view could not be loaded.
    bool show(QScreen* screen = nullptr);
    QQuickView* window() const { return m_view.get(); }

    bool expanded() const { return m_expanded; }
    QRectF pillRect() const { return m_geometry.pillRect(); }
    QRectF cardRect() const { return m_geometry.cardRect(); }
    QString artworkSource() const { return m_artworkSource; }
    const SkeletonPanelGeometry& geometry() const { return m_geometry; }

    // One pointer reading, in coordinates of the panel window.
    void pointerAt(const QPointF& point);

    // "m:ss", or "h:mm:ss" from an hour on; negative and unknown times read 0:00.
    Q_INVOKABLE static QString formatTime(double seconds);

Q_SIGNALS:
    void expandedChanged();
    void geometryChanged();
    void artworkSourceChanged();

private:
    void readPointer();
    void setExpanded(bool expanded);
    void updateInputRegion();
    void updateArtwork();

    PlayerState& m_player;
    SkeletonPanelGeometry m_geometry;
    std::unique_ptr<QQuickView> m_view;
    ArtworkImageProvider* m_artwork = nullptr; // owned by the view's engine
    QTimer m_pointerTimer;
    bool m_expanded = false;
    bool m_forcedOpen = false;
    int m_artworkGeneration = 0;
    QString m_artworkSource;
};

} // namespace MirlPlayer
