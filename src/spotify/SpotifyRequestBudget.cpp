#include "spotify/SpotifyRequestBudget.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

double SpotifyRequestBudget::reserve(double now, bool bulk) {
    std::erase_if(booked, [&](double d) { return d <= now - window; });
    const int allowed = bulk ? bulkLimit : limit;
    double candidate = now;
    for (;;) {
        // Keep every booking at least `spacing` away from its neighbours.
        const auto close = std::find_if(booked.begin(), booked.end(), [&](double d) {
            return std::abs(candidate - d) < spacing;
        });
        if (close != booked.end()) {
            candidate = *close + spacing;
            continue;
        }
        // Too many in the window that ends here: go just behind the moment the oldest of the
        // `allowed` newest bookings leaves it (0.01 s keeps clear of the exact boundary).
        std::vector<double> past;
        for (double d : booked)
            if (d > candidate - window && d <= candidate)
                past.push_back(d);
        if (int(past.size()) >= allowed) {
            candidate = past[past.size() - allowed] + window + 0.01;
            continue;
        }
        // Too many later bookings in the window that starts here: never slip in before a run
        // that this slot would overload.
        int ahead = 0;
        double lastAhead = 0;
        for (double d : booked)
            if (d >= candidate && d < candidate + window) {
                ++ahead;
                lastAhead = d;
            }
        if (ahead >= allowed) {
            candidate = lastAhead + spacing;
            continue;
        }
        break;
    }
    booked.insert(std::upper_bound(booked.begin(), booked.end(), candidate), candidate);
    return candidate;
}

} // namespace MirlPlayer
