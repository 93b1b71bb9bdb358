#pragma once

#include <QString>
#include <functional>

namespace MirlPlayer {

// The seam to the desktop's application list: which application is in front, and activation
// events. On X11 the frontmost application comes from _NET_ACTIVE_WINDOW.
class Workspace {
public:
    enum class Event { activated, unhidden };
    struct Application {
        QString id; // a stable identifier, such as "com.spotify.client" or the window class
        qint64 pid = 0;
        quint64 window = 0; // the window it was seen by, where the desktop has windows
        bool same(const Application& other) const {
            return window && other.window ? window == other.window : pid == other.pid;
        }
    };

    virtual ~Workspace() = default;

    // The application in front, or an empty id when there is none.
    virtual Application frontmost() = 0;
    // Brings the application forward again, as a pager or task bar would, so that the window
    // manager does not refuse it. GUI thread.
    virtual void activate(const Application& app) = 0;

    // Called on the GUI thread when an application is activated or unhidden.
    void setActivationHandler(std::function<void(Event, const Application&)> handler) {
        m_handler = std::move(handler);
    }

protected:
    void notifyActivation(Event event, const Application& app) const {
        if (m_handler)
            m_handler(event, app);
    }

private:
    std::function<void(Event, const Application&)> m_handler;
};

} // namespace MirlPlayer
