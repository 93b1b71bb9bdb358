#pragma once

#include <vector>

namespace MirlPlayer {

// Keeps the Web API traffic under Spotify's rate limits before the server has to complain. Every
// request books a slot here at once and then waits for it, so requests that start together get
// different slots without waiting on each other. Ordinary and bulk requests share one list: a
// crawl can fill at most `bulkLimit` of a window and leaves the rest to what the user is doing.
// Times are seconds (any common origin); the value is pure and touched on the GUI thread only.
struct SpotifyRequestBudget {
    double window = 30.0;
    int limit = 24;
    int bulkLimit = 10;
    double spacing = 0.25;
    std::vector<double> booked; // ascending; may hold future slots

    // Books and returns the earliest acceptable slot at or after `now`.
    double reserve(double now, bool bulk);
};

} // namespace MirlPlayer
