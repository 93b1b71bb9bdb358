#include "panel/TimelineModel.h"

#include "panel/PanelView.h"
#include "playback/PlaybackClock.h"
#include "playback/PlayerState.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace MirlPlayer {

TimelineModel::~TimelineModel() {
    if (m_player)
        m_player->setPositionShown(this, false);
}

void TimelineModel::setShown(bool shown) {
    if (m_shown == shown)
        return;
    m_shown = shown;
    if (m_player)
        m_player->setPositionShown(this, shown);
    Q_EMIT shownChanged();
    // Hidden, it let the position go by unannounced (a hidden text that changes still costs the
    // window a frame): shown again, it catches up.
    if (shown)
        Q_EMIT changed();
}

void TimelineModel::setPlayer(PlayerState* player) {
    if (m_player == player)
        return;
    if (m_player) {
        m_player->setPositionShown(this, false);
        disconnect(m_player, nullptr, this, nullptr);
        disconnect(m_player->clock(), nullptr, this, nullptr);
        disconnect(m_player->eqStore(), nullptr, this, nullptr);
    }
    m_player = player;
    if (player) {
        connect(player, &PlayerState::durationChanged, this, &TimelineModel::changed);
        // While the music's levels redraw the window anyway (about 24 times a second), a new
        // position waits for the next of them, so that both change in one frame, not in two:
        // six frames a second fewer for the open card. Without levels it is shown at once.
        connect(player->eqStore(), &LevelsStore::levelsChanged, this, [this] {
            m_levelsAt = m_clock->now();
            if (std::exchange(m_positionHeld, false))
                Q_EMIT changed();
        });
        connect(player->clock(), &PlaybackClock::positionChanged, this, [this] {
            if (!m_shown && !m_dragFrac)
                return;
            constexpr double levelsGap = 0.1;
            m_positionHeld = !m_dragFrac && m_clock->now() - m_levelsAt < levelsGap;
            if (!m_positionHeld)
                Q_EMIT changed();
        });
        player->setPositionShown(this, m_shown);
    }
    Q_EMIT playerChanged();
    Q_EMIT changed();
}

double TimelineModel::duration() const {
    const double d = m_player ? m_player->duration() : 0;
    return std::isfinite(d) && d > 0 ? d : 0;
}

bool TimelineModel::enabled() const {
    return duration() > 0;
}

double TimelineModel::fraction() const {
    const double d = duration();
    if (d <= 0)
        return 0;
    if (m_dragFrac)
        return *m_dragFrac;
    return std::clamp(m_player->clock()->position() / d, 0.0, 1.0);
}

double TimelineModel::shownSeconds() const {
    return fraction() * duration();
}

QString TimelineModel::elapsedText() const {
    return formatPlayTime(shownSeconds());
}

QString TimelineModel::remainingText() const {
    return QStringLiteral("-") + formatPlayTime(duration() - shownSeconds());
}

QString TimelineModel::durationText() const {
    return formatPlayTime(duration());
}

void TimelineModel::drag(double x, double width) {
    if (width <= 0 || !std::isfinite(x))
        return;
    const double f = std::clamp(x / width, 0.0, 1.0);
    if (m_dragFrac == f)
        return;
    m_dragFrac = f;
    Q_EMIT changed();
}

void TimelineModel::release() {
    if (!m_dragFrac)
        return;
    const double f = *m_dragFrac;
    m_dragFrac.reset();
    if (m_player && duration() > 0)
        m_player->seek(f * duration());
    Q_EMIT changed();
}

void TimelineModel::cancel() {
    if (!m_dragFrac)
        return;
    m_dragFrac.reset();
    Q_EMIT changed();
}

} // namespace MirlPlayer
