#include "playback/PlaybackClock.h"

namespace MirlPlayer {

void PlaybackClock::setPosition(double seconds) {
    if (m_position == seconds)
        return;
    m_position = seconds;
    Q_EMIT positionChanged();
}

} // namespace MirlPlayer
