#pragma once

#include "playback/PlayerState.h"

#include "core/Clock.h"
#include "panel/logic/PointerGuard.h"

#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QTimer>

namespace MirlPlayer {

// The art square of the card: a tap raises the music player when that is the source and the library
// otherwise; resting the pointer on it opens the library after 350 ms with the visualizer shown
// (1000 ms without), unless the pointer was already on it when the card opened, or a library
// toggle has just anchored the pointer guard. Hover never opens the library for Apple Music.
class ArtSlot : public QObject {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::PlayerState* player READ player WRITE setPlayer NOTIFY playerChanged)
    Q_PROPERTY(bool showVisualizer MEMBER m_showVisualizer NOTIFY showVisualizerChanged)
    Q_PROPERTY(QString label READ label NOTIFY playerChanged)
    Q_PROPERTY(bool hoverPending READ hoverPending NOTIFY hoverPendingChanged)
public:
    explicit ArtSlot(QObject* parent = nullptr);
    ArtSlot(Clock& clock, PointerGuard& guard, QObject* parent = nullptr);
    ~ArtSlot() override;

    PlayerState* player() const { return m_player; }
    void setPlayer(PlayerState* player);
    QString label() const;
    bool hoverPending() const { return m_hoverWork.isActive(); }

    // The card appears with the art at `screenRect`; the pointer is read once.
    Q_INVOKABLE void appear(const QRectF& screenRect);
    // A hover event inside the art at a screen point.
    Q_INVOKABLE void hover(const QPointF& screenPointer);
    Q_INVOKABLE void tap();
    // The card goes away: a pending opening is cancelled.
    Q_INVOKABLE void disappear();

    // Where the pointer is read; the cursor's position unless set.
    std::function<QPointF()> pointer;

Q_SIGNALS:
    void playerChanged();
    void showVisualizerChanged();
    void hoverPendingChanged();
    void openLibrary();

private:
    bool fromMusic() const;
    void finishHover();

    Clock& m_clock;
    PointerGuard& m_guard;
    QPointer<PlayerState> m_player;
    bool m_showVisualizer = true;
    HoverIntent m_intent;
    QTimer m_hoverWork;
};

} // namespace MirlPlayer
