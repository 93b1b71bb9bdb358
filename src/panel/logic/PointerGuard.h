#pragma once

#include "core/Clock.h"

#include <QPointF>
#include <QTimer>
#include <functional>
#include <optional>

namespace MirlPlayer {

// Keeps a library toggle from being undone by the hover that follows it: every toggle anchors
// the guard at the pointer, and hover may open the library again only once the pointer has
// travelled more than `intentTravel` from there. One per process, main thread only.
class PointerGuard {
public:
    static constexpr double intentTravel = 30;
    static constexpr double exitTravel = 24;

    // The process-wide guard; the panel and the library view share it.
    static PointerGuard& shared();
    PointerGuard();
    PointerGuard(const PointerGuard&) = delete;
    PointerGuard& operator=(const PointerGuard&) = delete;

    // Where the guard reads the pointer on its own 0.1 s check.
    void setPointerSource(std::function<QPointF()> source) { m_source = std::move(source); }

    // Anchors the guard at `pointer` and (re)starts its check.
    void arm(QPointF pointer);
    // The guard's own check: empties the anchor once the pointer has moved away.
    void check();
    // For a hover that wants to act: passes when no anchor is set or the pointer has moved far
    // enough, emptying the anchor in that case.
    bool passes(QPointF pointer);

    std::optional<QPointF> anchor() const { return m_anchor; }
    bool checking() const { return m_timer.isActive(); }

private:
    void clear();

    std::optional<QPointF> m_anchor;
    std::function<QPointF()> m_source;
    QTimer m_timer;
};

// The artwork's hover memory: a pointer that was already over the art when the card opened
// does not count as a hover until it has left by `exitTravel` and 0.8 s have passed.
struct HoverIntent {
    bool waitingForExit = false;
    double appearedAt = Clock::distantPast;
    QPointF appearancePointer;

    static HoverIntent appear(bool pointerInsideArt, double now, QPointF pointer) {
        return {pointerInsideArt, now, pointer};
    }

    // One continuous-hover event inside the art. Answers whether the delayed library opening
    // may start now. `fromMusic` is true when the source is Apple Music, where hover never opens
    // the library; `workRunning` when an opening is already pending.
    bool hoverMayStart(PointerGuard& guard, double now, QPointF pointer, bool fromMusic,
                       bool workRunning);
};

} // namespace MirlPlayer
