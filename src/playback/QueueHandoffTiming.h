#pragma once

#include <QString>
#include <optional>

namespace MirlPlayer {

// When the song queue hands the next song to Spotify: a pure state machine, fed one Spotify
// sample at a time, with no clock and no I/O. Everything subtle about track boundaries lives
// here: a skip in mid-song must not consume the queue, a song that ran out must, and the same
// boundary must not be tried twice.
struct QueueHandoffTiming {
    // Within this many seconds of the end a wake-up is armed; also the distance from the end at
    // which a song counts as played afresh.
    static constexpr double boundaryWindow = 8.0;
    // How near the end the previous sample must have been for a track change to count as the
    // song ending.
    static constexpr double endedWithin = 4.0;
    // How near the end a player that stopped by itself must be.
    static constexpr double stoppedWithin = 1.0;

    struct Sample {
        QString uri;
        double position = 0; // seconds
        double duration = 0; // seconds
        bool playing = false;
    };
    struct Action {
        enum Kind { nothing, advanceNow, boundaryIn };
        Kind kind = nothing;
        double seconds = 0; // for boundaryIn: how long until the expected end
        bool operator==(const Action&) const = default;
    };

    // The last sample seen.
    std::optional<Sample> previous;
    // The song from which a handoff was last attempted; it blocks repeats until that song is
    // played afresh.
    std::optional<QString> attemptedURI;

    Action update(const std::optional<QString>& uri, bool playing, bool hasQueue, bool busy,
                  double position, double duration);
};

} // namespace MirlPlayer
