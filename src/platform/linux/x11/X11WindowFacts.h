#pragma once

#include "platform/WindowFacts.h"
#include "platform/linux/x11/X11WindowRecords.h"

#include <QHash>
#include <functional>

namespace MirlPlayer {

// The on-screen window list of an X11 session (XWayland included), read over the process's one
// X connection and turned into records by `windowRecords` (see there for the layers and for how
// full-screen is decided). Owners are the WM_CLASS class names, identifiers come from
// _NET_WM_PID, alpha from _NET_WM_WINDOW_OPACITY.
//
// The read is pipelined, so its cost hardly grows with the number of windows; what never changes
// in a window's life (client, class, pid, type) is read once.
class X11WindowFacts : public WindowFacts {
public:
    X11WindowFacts();
    ~X11WindowFacts() override;

    bool connected() const;
    std::optional<WindowList> onScreenWindows() override;
    qint64 ownPid() const override;

    void setOverviewSource(std::function<bool()> source) { m_overview = std::move(source); }
    // The properties the list reads, on the root and on client windows: a change of any other
    // (a title, a user time) leaves the list as it is.
    static const QList<QByteArray>& propertiesRead();
    // Called with each client window when it first appears in the list, before its properties
    // are read (the change watch selects its property changes there).
    void setNewClientHook(std::function<void(quint32)> hook) { m_newClient = std::move(hook); }

private:
    struct Facts {
        quint32 client = 0;
        std::optional<QString> owner;
        std::optional<qint64> pid;
        X11Window::Kind kind = X11Window::Kind::normal;
        bool typed = false;
    };
    Facts factsFor(quint32 topLevel);
    quint32 findClient(quint32 window, int depth);
    X11Desktop readDesktop(const QRect& root);

    QHash<quint32, Facts> m_facts;
    std::function<bool()> m_overview;
    std::function<void(quint32)> m_newClient;
};

} // namespace MirlPlayer
