#pragma once

#include "core/Clock.h"

#include <QString>
#include <optional>

namespace MirlPlayer {

// Tells a single click on a song row (play it) from a double click (like it). The first click
// waits a little for its possible second; the third click of a triple click is swallowed, so a
// quick triple click likes the song once and never plays it.
struct RowClickTiming {
    static constexpr double tripleClickGuard = 0.3; // after a double click, clicks are ignored
    static constexpr double longestWait = 0.22;     // a single click never waits longer

    enum class Outcome { ignored, doubleClick, waiting };

    std::optional<QString> pendingClick; // id of the row whose first click waits
    double lastDoubleClick = Clock::distantPast;

    // How long a first click waits: the desktop's double-click interval, at most `longestWait`.
    static double waitFor(double doubleClickInterval);

    // A click on the row `id` at `now`. `waiting` means a (new) wait begins for this row: the
    // caller restarts its timer, which forgets a first click on another row.
    Outcome click(const QString& id, double now);
    // The wait ran out: the row that plays, if any.
    std::optional<QString> expire();
    // The view went away: nothing waits any more.
    void cancel() { pendingClick.reset(); }
};

} // namespace MirlPlayer
