#include "platform/linux/wayland/PanelBackend.h"

namespace MirlPlayer {

SessionFacts SessionFacts::fromEnvironment() {
    return {qEnvironmentVariable("XDG_SESSION_TYPE"), qEnvironmentVariable("WAYLAND_DISPLAY"),
            qEnvironmentVariable("DISPLAY"), qEnvironmentVariable("MIRL_PANEL_BACKEND")};
}

const PanelBackendChoice& PanelBackendChoice::forThisProcess() {
    static const PanelBackendChoice choice = choosePanelBackend(SessionFacts::fromEnvironment());
    return choice;
}

QString panelBackendName(PanelBackend backend) {
    return backend == PanelBackend::xwayland ? QStringLiteral("xwayland") : QStringLiteral("x11");
}

PanelBackendChoice choosePanelBackend(const SessionFacts& facts) {
    const QString forced = facts.forced.trimmed().toLower();
    if (forced == QLatin1String("x11"))
        return {PanelBackend::x11, QStringLiteral("chosen by MIRL_PANEL_BACKEND")};
    if (forced == QLatin1String("xwayland"))
        return {PanelBackend::xwayland, QStringLiteral("chosen by MIRL_PANEL_BACKEND")};
    // A value this build does not know (such as "layer-shell": no native Wayland surface is
    // built) is named in the reason, and the session decides as if it were absent.
    const QString ignored =
        forced.isEmpty()
            ? QString()
            : QStringLiteral("MIRL_PANEL_BACKEND=%1 is not a backend of this build (x11, "
                             "xwayland); ")
                  .arg(facts.forced);
    // Either variable makes a Wayland session: some launchers drop XDG_SESSION_TYPE, and a
    // nested compositor sets WAYLAND_DISPLAY alone.
    if (!facts.waylandDisplay.isEmpty() ||
        facts.sessionType.compare(QLatin1String("wayland"), Qt::CaseInsensitive) == 0) {
        const QString compositor = facts.waylandDisplay.isEmpty()
                                       ? QStringLiteral("XDG_SESSION_TYPE=wayland")
                                       : QStringLiteral("WAYLAND_DISPLAY=") + facts.waylandDisplay;
        const QString x = facts.x11Display.isEmpty()
                              ? QStringLiteral("no DISPLAY yet")
                              : QStringLiteral("DISPLAY=") + facts.x11Display;
        return {PanelBackend::xwayland,
                ignored + QStringLiteral("Wayland session (%1), the panel is an X window of "
                                         "XWayland (%2) and sees the pointer over its hover area")
                              .arg(compositor, x)};
    }
    return {PanelBackend::x11,
            ignored +
                QStringLiteral("X11 session (XDG_SESSION_TYPE=%1, DISPLAY=%2)")
                    .arg(facts.sessionType.isEmpty() ? QStringLiteral("unset") : facts.sessionType,
                         facts.x11Display)};
}

} // namespace MirlPlayer
