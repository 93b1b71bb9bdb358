#pragma once

#include "playback/Snapshot.h"

#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

namespace MirlPlayer {

// The seam to the player applications. Sampling, commands and seeks are called on the serial
// queue "notch.music.poll" and may block it (a hung player stalls that queue and nothing else);
// they never throw. The Linux implementation speaks MPRIS over the session bus.
class PlayerBridge {
public:
    virtual ~PlayerBridge() = default;

    // One sample of one player. Never fails: a closed, hung or refusing player gives
    // Snapshot::empty(source). A player that is not running costs no call to it.
    virtual Snapshot fetch(Source source) = 0;

    // Player commands by verb: "playpause", "next track", "previous track". Unknown verbs and
    // absent players are ignored.
    virtual void command(Source source, const QString& verb) = 0;

    // Moves the player to `seconds` into the current track.
    virtual void seek(Source source, double seconds) = 0;

    // The process id of the player, when it is running.
    virtual std::optional<qint64> pid(Source source) = 0;

    // The name to show for the player ("Spotify", "Apple Music", or the player's own name).
    virtual QString displayName(Source source) = 0;

    // Asks the player to play the item at `uri` (for Spotify a "spotify:" URI) and returns once it
    // answered: false when the player is absent or refused. Blocks; called on the serial queue
    // "notch.music.play", never on the GUI thread.
    virtual bool openUri(Source source, const QString& uri) = 0;

    // Opening a player on purpose (never done by sampling). GUI thread.
    virtual void openApplication(Source source) = 0;
    virtual void openUrl(const QUrl& url) = 0;

    // Called, on any thread, whenever a player announces a change (the equivalent of the players'
    // distributed notifications). The receiver asks for an immediate sample.
    void setChangeHandler(std::function<void()> handler) { m_changeHandler = std::move(handler); }

protected:
    void notifyChanged() const {
        if (m_changeHandler)
            m_changeHandler();
    }

private:
    std::function<void()> m_changeHandler;
};

} // namespace MirlPlayer
