#pragma once

#include "core/Clock.h"
#include "playback/SpotifyFocusGuard.h"
#include "playback/SpotifyPlaybackSelection.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QUuid>
#include <optional>

namespace MirlPlayer {

class MusicController;
class PlayerBridge;
class PlayerState;
class SpotifyLibrary;

// The road of a request to play one Spotify song. The display shows the song at once; the song is
// started through Spotify Connect when the account allows it, otherwise by the Spotify client's own
// MPRIS OpenUri behind the focus guard; and it counts as started only when the client itself
// reports that song as playing (an API success alone proves nothing). Only the newest request
// counts: an older one finds the controller's request ID changed, touches nothing and ends with
// SpotifyCancellation. GUI thread; the client is asked on the queue "notch.music.play".
class SpotifyPlayRequest : public QObject {
    Q_OBJECT
public:
    // How long the display holds the requested song against samples of the old one.
    static constexpr double expectedTrackWait = 4.0;
    // The client is read back every quarter second: up to 3 s after a Connect start, up to 5 s
    // after its own OpenUri.
    static constexpr int readBackTries = 12;
    static constexpr int playTries = 20;
    static constexpr int tryIntervalMs = 250;

    static inline const QString notStartedMessage =
        QStringLiteral("Spotify didn’t start this song. Try again.");
    static inline const QString clientFailedMessage =
        QStringLiteral("Spotify could not start the selected song. Make sure Spotify is running on "
                       "this computer and try again.");

    // Makes `player.playSpotify` take this road.
    SpotifyPlayRequest(PlayerState& player, SpotifyLibrary& library, Workspace& workspace,
                       Clock& clock = Clock::system(), QObject* parent = nullptr);

    // Throws SpotifyFailure with the sentence also published as the player's
    // spotifyPlaybackError, or SpotifyCancellation when a newer request replaced this one.
    QCoro::Task<void> play(SpotifyPlaybackSelection selection);

    SpotifyFocusGuard& focusGuard() { return m_guard; }

    // On the play queue: whether the client plays `trackURI`, asked up to `tries` times.
    static bool readBack(PlayerBridge& bridge, const QString& trackURI, int tries);
    // On the play queue: opens the song in the client and waits until it plays. The failure
    // sentence, or none.
    static std::optional<QString> playVerified(PlayerBridge& bridge, const QString& trackURI);

private:
    QCoro::Task<void> playThroughClient(QString trackURI, QUuid id);
    // Ends the request: `failure` none means started.
    void finish(MusicController& controller, const std::optional<QString>& failure,
                bool throughConnect);

    PlayerState& m_player;
    SpotifyLibrary& m_library;
    Clock& m_clock;
    SpotifyFocusGuard m_guard;
};

} // namespace MirlPlayer
