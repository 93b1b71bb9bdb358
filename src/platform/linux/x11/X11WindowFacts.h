#pragma once

#include "platform/WindowFacts.h"
#include "platform/linux/x11/X11Handles.h"

#include <QHash>
#include <functional>

namespace MirlPlayer {

// The on-screen window list of an X11 session (XWayland included), mapped to the layers the
// placement heuristics know:
// - ordinary and dialog windows: layer 0, full-screen ones included (their bounds tell);
// - docks and panels along a screen's top edge: layer 25, the menu bar's place; other docks 20;
// - notifications: 23; popup and dropdown menus, combo lists, tooltips and unmanaged
//   (override-redirect) windows: 101;
// - a desktop overview, when `setOverviewSource` says one is shown: an owner "Dock" record at
//   layer 18 covering the whole root window.
// Owners are the WM_CLASS class names, identifiers come from _NET_WM_PID, alpha from
// _NET_WM_WINDOW_OPACITY. Desktop windows and hidden (minimised) ones are left out.
class X11WindowFacts : public WindowFacts {
public:
    X11WindowFacts();
    ~X11WindowFacts() override;

    bool connected() const { return bool(m_display); }
    std::optional<WindowList> onScreenWindows() override;
    qint64 ownPid() const override;

    void setOverviewSource(std::function<bool()> source) { m_overview = std::move(source); }

private:
    // What does not change during a window's life, read once per window.
    struct Facts {
        X11::Window client = 0;
        std::optional<QString> owner;
        std::optional<qint64> pid;
        X11::Atom type = 0;
    };
    Facts factsFor(X11::Window topLevel);
    X11::Window findClient(X11::Window topLevel, int depth);

    X11::DisplayHandle m_display;
    std::unique_ptr<X11::Atoms> m_atoms;
    QHash<X11::Window, Facts> m_facts;
    std::function<bool()> m_overview;
};

} // namespace MirlPlayer
