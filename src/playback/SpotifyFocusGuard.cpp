#include "playback/SpotifyFocusGuard.h"

#include "core/FocusLog.h"

#include <QTimer>

namespace MirlPlayer {

SpotifyFocusGuard::SpotifyFocusGuard(Workspace& workspace, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_workspace(workspace)
    , m_clock(clock) {}

void SpotifyFocusGuard::begin() {
    const Workspace::Application front = m_workspace.frontmost();
    if (FocusLog::isSpotify(front.id)) {
        stop(); // the user is there by choice
        return;
    }
    m_origin = front.id.isEmpty() && !front.window ? std::nullopt : std::optional(front);
    m_deadline = m_clock.now() + guardTime;
    // A guard already running simply takes the new origin and deadline.
    m_observing = true;
}

void SpotifyFocusGuard::release() {
    m_deadline = std::min(m_clock.now() + releaseGrace, m_deadline);
    QTimer::singleShot(releaseCheckMs, this, [this] {
        if (!(m_clock.now() < m_deadline))
            stop();
    });
}

void SpotifyFocusGuard::stop() {
    m_observing = false;
    m_origin.reset();
}

void SpotifyFocusGuard::noteActivation(Workspace::Event event, const Workspace::Application& app) {
    if (!m_observing)
        return;
    const double now = m_clock.now();
    if (!(now < m_deadline)) {
        stop();
        return;
    }
    if (app.id.isEmpty())
        return;
    const bool activated = event == Workspace::Event::activated;
    if (FocusLog::isSpotify(app.id)) {
        m_lastHide = now;
        if (activated)
            restoreOrigin();
        // The desktop may finish its own activation after ours: look again a moment later.
        QTimer::singleShot(recheckMs, this, [this] {
            if (m_origin && !m_workspace.frontmost().same(*m_origin))
                restoreOrigin();
        });
        return;
    }
    if (activated && now - m_lastHide < followerWindow && m_origin && !app.same(*m_origin))
        restoreOrigin();
}

void SpotifyFocusGuard::restoreOrigin() {
    if (!m_origin)
        return;
    FocusLog::shared().logLine(QStringLiteral("Spotify came to the front during a play request; "
                                              "focus given back to ") +
                               (m_origin->id.isEmpty() ? QStringLiteral("?") : m_origin->id));
    m_workspace.activate(*m_origin);
}

} // namespace MirlPlayer
