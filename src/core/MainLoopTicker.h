#pragma once

#include <QTimer>
#include <functional>

namespace MirlPlayer {

// A repeating timer of the main thread that costs less per firing than a QTimer. On GLib's main
// loop (Qt's default on Linux) it is a GLib source of its own: a firing skips Qt's timer list,
// the timer event and the signal, about a sixth of what a wake of the main thread costs, which
// counts for a timer that fires twenty times a second for the program's whole life. Its due
// times stay on a fixed grid, as a precise QTimer's do, so the rate does not drift; a firing that
// comes too late skips the missed ones. Elsewhere (another thread, Qt's own event loop under
// QT_NO_GLIB=1) it is a precise QTimer.
class MainLoopTicker {
public:
    MainLoopTicker(int intervalMs, std::function<void()> action);
    ~MainLoopTicker();
    MainLoopTicker(const MainLoopTicker&) = delete;
    MainLoopTicker& operator=(const MainLoopTicker&) = delete;

    // Starts or restarts the ticker: the next firing comes one interval from now.
    void start();
    void stop();
    bool isActive() const;
    // Whether it runs as a GLib source (decided by the first start).
    bool onGlib() const { return m_source != nullptr; }

    struct Source;

private:
    int m_intervalMs;
    std::function<void()> m_action;
    Source* m_source = nullptr;
    bool m_decided = false;
    QTimer m_timer;
};

} // namespace MirlPlayer
