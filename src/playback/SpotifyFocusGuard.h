#pragma once

#include "core/Clock.h"
#include "platform/Workspace.h"

#include <QObject>
#include <optional>

namespace MirlPlayer {

// Starting a song through the Spotify client itself may pull its window to the front. For a
// limited time after such a play the guard gives the focus back to the application that had it,
// and says so in the focus log. It acts only on the activations the desktop reports while it
// guards. GUI thread.
class SpotifyFocusGuard : public QObject {
    Q_OBJECT
public:
    static constexpr double guardTime = 10.0;
    // After release, Spotify is still pushed back this long.
    static constexpr double releaseGrace = 1.5;
    static constexpr int releaseCheckMs = 1600;
    static constexpr int recheckMs = 120;
    // An application coming forward this soon after Spotify was pushed back is the one the
    // desktop chose in its place, not the user's choice.
    static constexpr double followerWindow = 0.8;

    explicit SpotifyFocusGuard(Workspace& workspace, Clock& clock = Clock::system(),
                               QObject* parent = nullptr);

    void begin();
    void release();
    // Every activation the desktop reports.
    void noteActivation(Workspace::Event event, const Workspace::Application& app);

    bool guarding() const { return m_observing; }
    const std::optional<Workspace::Application>& origin() const { return m_origin; }

private:
    void stop();
    void restoreOrigin();

    Workspace& m_workspace;
    Clock& m_clock;
    bool m_observing = false;
    std::optional<Workspace::Application> m_origin;
    double m_deadline = Clock::distantPast;
    double m_lastHide = Clock::distantPast;
};

} // namespace MirlPlayer
