#pragma once

#include <QString>

namespace MirlPlayer {

// How the panel window meets the display server.
// - `x11`: an X11 session. The pointer is polled on the root window; the window takes no
//   pointer input at rest.
// - `xwayland`: a Wayland session, the panel an X window of XWayland. An X client learns where
//   the Wayland pointer is only while it is over one of its own windows, so the window takes
//   the pointer over the hover rectangle too and its own events tell the position.
enum class PanelBackend { x11, xwayland };

// What the session tells about itself, from the environment.
struct SessionFacts {
    QString sessionType;    // XDG_SESSION_TYPE
    QString waylandDisplay; // WAYLAND_DISPLAY
    QString x11Display;     // DISPLAY
    QString forced;         // MIRL_PANEL_BACKEND: "x11" or "xwayland"

    static SessionFacts fromEnvironment();
};

struct PanelBackendChoice {
    PanelBackend backend = PanelBackend::x11;
    // One sentence for the log: why this backend runs.
    QString reason;

    // The choice for this process, made from its environment at first use.
    static const PanelBackendChoice& forThisProcess();
};

PanelBackendChoice choosePanelBackend(const SessionFacts& facts);
QString panelBackendName(PanelBackend backend);

} // namespace MirlPlayer
