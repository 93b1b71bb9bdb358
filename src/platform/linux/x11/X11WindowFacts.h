#pragma once

#include "platform/WindowFacts.h"

#include <QHash>
#include <functional>
#include <memory>

struct xcb_connection_t;

namespace MirlPlayer {

// The on-screen window list of an X11 session (XWayland included), mapped to the layers the
// placement heuristics know:
// - ordinary and dialog windows: layer 0, full-screen ones included (their bounds tell);
// - docks and panels along a screen's top edge: layer 25, the menu bar's place; other docks 20;
// - notifications: 23; popup and dropdown menus, combo lists, tooltips and unmanaged
//   (override-redirect) windows of no type: 101;
// - a desktop overview, when `setOverviewSource` says one is shown: an owner "Dock" record at
//   layer 18 covering the whole root window.
// Owners are the WM_CLASS class names, identifiers come from _NET_WM_PID, alpha from
// _NET_WM_WINDOW_OPACITY. Desktop windows and hidden (minimised) ones are left out.
//
// The read is pipelined over its own xcb connection, so its cost hardly grows with the number of
// windows; what never changes in a window's life (client, class, pid, type) is read once.
class X11WindowFacts : public WindowFacts {
public:
    X11WindowFacts();
    ~X11WindowFacts() override;

    bool connected() const { return bool(m_connection); }
    std::optional<WindowList> onScreenWindows() override;
    qint64 ownPid() const override;

    void setOverviewSource(std::function<bool()> source) { m_overview = std::move(source); }

private:
    struct Facts {
        quint32 client = 0;
        std::optional<QString> owner;
        std::optional<qint64> pid;
        quint32 type = 0;
    };
    enum AtomName {
        WM_STATE,
        WM_CLASS,
        NET_WM_PID,
        NET_WM_WINDOW_TYPE,
        NET_WM_STATE,
        NET_WM_STATE_HIDDEN,
        NET_WM_WINDOW_OPACITY,
        TYPE_DESKTOP,
        TYPE_DOCK,
        TYPE_NOTIFICATION,
        TYPE_POPUP_MENU,
        TYPE_DROPDOWN_MENU,
        TYPE_COMBO,
        TYPE_TOOLTIP,
        TYPE_DND,
        atomCount
    };
    Facts factsFor(quint32 topLevel);
    quint32 findClient(quint32 window, int depth);

    struct Disconnect {
        void operator()(xcb_connection_t* c) const;
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    quint32 m_root = 0;
    quint32 m_atoms[atomCount] = {};
    QHash<quint32, Facts> m_facts;
    std::function<bool()> m_overview;
};

} // namespace MirlPlayer
