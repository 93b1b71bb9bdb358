#pragma once

#include "platform/Workspace.h"
#include "platform/linux/x11/X11Handles.h"

#include <QObject>

class QSocketNotifier;

namespace MirlPlayer {

// The frontmost application from _NET_ACTIVE_WINDOW: its WM_CLASS class as the id (Spotify's
// desktop client reported as "com.spotify.client", as the focus log expects) and its
// _NET_WM_PID. Activation events come from watching that root property, on the GUI thread.
class X11Workspace : public QObject, public Workspace {
    Q_OBJECT
public:
    explicit X11Workspace(QObject* parent = nullptr);
    ~X11Workspace() override;

    Application frontmost() override;
    void activate(const Application& app) override;

    // The identifier for a window class: the well-known players keep their usual identifiers.
    static QString applicationID(const QByteArray& wmClass);

private:
    void readEvents();
    Application applicationOf(unsigned long window);

    X11::DisplayHandle m_display;
    std::unique_ptr<X11::Atoms> m_atoms;
    QSocketNotifier* m_notifier = nullptr;
    Application m_lastFront;
};

// Sets a window's XShape input region: clicks outside it fall through to whatever lies beneath,
// while drawing is untouched (a plain window mask would clip the drawing too).
class X11InputRegion {
public:
    X11InputRegion();
    ~X11InputRegion();
    bool connected() const { return bool(m_display); }
    // `rect` is in the window's own pixels; an empty rectangle makes the window click-through.
    void apply(unsigned long window, const QRect& rect);
    // Gives the keyboard focus back to the window under the pointer.
    void releaseKeyboard();

private:
    X11::DisplayHandle m_display;
};

} // namespace MirlPlayer
