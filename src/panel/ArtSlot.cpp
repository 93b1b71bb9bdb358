#include "panel/ArtSlot.h"

#include "playback/PlayerState.h"

#include <QCursor>

namespace MirlPlayer {

ArtSlot::ArtSlot(QObject* parent)
    : ArtSlot(Clock::system(), PointerGuard::shared(), parent) {}

ArtSlot::ArtSlot(Clock& clock, PointerGuard& guard, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_guard(guard) {
    pointer = [] { return QPointF(QCursor::pos()); };
    m_hoverWork.setSingleShot(true);
    connect(&m_hoverWork, &QTimer::timeout, this, &ArtSlot::finishHover);
}

ArtSlot::~ArtSlot() = default;

void ArtSlot::setPlayer(PlayerState* player) {
    if (player == m_player)
        return;
    if (m_player)
        disconnect(m_player, nullptr, this, nullptr);
    m_player = player;
    if (player)
        connect(player, &PlayerState::sourceNameChanged, this, &ArtSlot::playerChanged);
    Q_EMIT playerChanged();
}

bool ArtSlot::fromMusic() const {
    return m_player && m_player->sourceName() == u"Music";
}

QString ArtSlot::label() const {
    return fromMusic() ? QStringLiteral("Open the music player")
                       : QStringLiteral("Browse Spotify library");
}

void ArtSlot::appear(const QRectF& screenRect) {
    const QPointF at = pointer();
    // A frame of width 0 never contains the pointer.
    const bool inside = screenRect.width() > 0 && screenRect.contains(at);
    m_intent = HoverIntent::appear(inside, m_clock.now(), at);
}

void ArtSlot::hover(const QPointF& screenPointer) {
    if (!m_intent.hoverMayStart(m_guard, m_clock.now(), screenPointer, fromMusic(),
                                m_hoverWork.isActive()))
        return;
    m_hoverWork.start(m_showVisualizer ? 350 : 1000);
    Q_EMIT hoverPendingChanged();
}

void ArtSlot::finishHover() {
    Q_EMIT hoverPendingChanged();
    if (m_guard.passes(pointer()))
        Q_EMIT openLibrary();
}

void ArtSlot::tap() {
    disappear();
    if (fromMusic()) {
        if (m_player)
            m_player->openSource();
        return;
    }
    Q_EMIT openLibrary();
}

void ArtSlot::disappear() {
    if (!m_hoverWork.isActive())
        return;
    m_hoverWork.stop();
    Q_EMIT hoverPendingChanged();
}

} // namespace MirlPlayer
