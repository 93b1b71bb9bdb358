#pragma once

#include <optional>

namespace MirlPlayer {

// The small rules that give the panel's lists their feel at the edges: the filter field that
// slips away, pull to refresh, and the gliding of long sidebar names. Pure values, no clock.

// The wheel movement of one event, in points, downward positive. A touchpad reports precise
// pixels; a classic wheel counts ten points per notch (one notch is 120 eighths of a degree).
double scrollWheelDelta(double pixelDeltaY, double angleDeltaY);

// An element that scrolls away after some travel downward and returns after half that upward.
struct ScrollAwayState {
    bool hidden = false;
    double last = 0;
    double travel = 0;
    double hideAfter = 24;
    double showAfter = 12;
    double alwaysShownAbove = 30;

    // `frozen` when the report has no wheel movement to act on; `canHide` when the list has
    // something to scroll.
    void update(double delta, bool frozen, bool canHide, double offset);
};

// Pull to refresh: how far the list is pulled past its top (`overscroll`, positive), as a
// progress of 0...1, firing once per pull; a new pull needs the list back at rest first.
struct PullToRefreshState {
    double distance = 60;
    double progress = 0;
    bool armed = true;

    // Answers true when the refresh should run now.
    bool update(double overscroll);
};

// The speed of a gliding name eases between two speeds over `duration`; its position follows.
struct SidebarMarqueeMotion {
    static constexpr double speed = 22;   // points per second
    static constexpr double easing = 0.5; // seconds to start or stop
    static constexpr double spacing = 28; // between the copies of the name
    double start = 0;
    double origin = 0;
    double fromSpeed = 0;
    double toSpeed = 0;
    double duration = easing;

    double position(double now) const;
    double speedAt(double now) const;
    // The strip's repeat: one copy of the name and its spacing.
    static double stride(double textWidth);
};

} // namespace MirlPlayer
