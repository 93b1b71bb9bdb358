#include "playback/QueueHandoffTiming.h"

#include <cmath>

namespace MirlPlayer {

QueueHandoffTiming::Action QueueHandoffTiming::update(const std::optional<QString>& uri,
                                                      bool playing, bool hasQueue, bool busy,
                                                      double position, double duration) {
    const double remaining = duration - position;
    const bool finite = std::isfinite(position) && std::isfinite(duration);
    const std::optional<Sample> before = previous;
    if (uri)
        previous = Sample{*uri, position, duration, playing};
    else
        previous.reset();

    // Far from its end the song is being played afresh, and may hand off again.
    if (attemptedURI == uri && finite && remaining > boundaryWindow)
        attemptedURI.reset();
    if (!hasQueue || busy || !uri || !finite)
        return {};

    // The boundary was missed: the player went on to another song by itself, or the song ran
    // out and the player stopped. A change far from the end is the user's skip and is left alone.
    if (before && before->playing && before->duration > 0 &&
        before->duration - before->position <= endedWithin && attemptedURI != before->uri) {
        const bool movedOn = *uri != before->uri;
        const bool ranOut = !movedOn && !playing && duration > 0 && remaining <= stoppedWithin;
        if (movedOn || ranOut) {
            attemptedURI = before->uri;
            return {Action::advanceNow};
        }
    }
    if (playing && duration > 0 && remaining >= 0 && remaining <= boundaryWindow &&
        attemptedURI != uri)
        return {Action::boundaryIn, remaining};
    return {};
}

} // namespace MirlPlayer
