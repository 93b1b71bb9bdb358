#include "playback/SpotifyPlayRequest.h"

#include "core/FocusLog.h"
#include "core/SerialQueue.h"
#include "platform/PlayerBridge.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"
#include "spotify/SpotifyLibrary.h"

#include <QCoro/QCoroSignal>
#include <QPointer>
#include <QThread>

namespace MirlPlayer {

namespace {

// Where the play queue's answer lands on the GUI thread.
class Landing : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void landed();
};

// Runs `work` on `queue` and resumes on the GUI thread with its result.
template <typename T> QCoro::Task<T> onQueue(SerialQueue& queue, std::function<T()> work) {
    auto* landing = new Landing;
    auto result = std::make_shared<std::optional<T>>();
    queue.async([work = std::move(work), result, target = QPointer<Landing>(landing)] {
        T value = work();
        onMain(target, [target, result, value] {
            *result = value;
            Q_EMIT target->landed();
        });
    });
    co_await qCoro(landing, &Landing::landed);
    landing->deleteLater();
    co_return std::move(**result);
}

} // namespace

SpotifyPlayRequest::SpotifyPlayRequest(PlayerState& player, SpotifyLibrary& library,
                                       Workspace& workspace, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_player(player)
    , m_library(library)
    , m_clock(clock)
    , m_guard(workspace, clock) {
    player.setPlayRequester(
        [this](const SpotifyPlaybackSelection& selection) { return play(selection); });
}

bool SpotifyPlayRequest::readBack(PlayerBridge& bridge, const QString& trackURI, int tries) {
    if (!SpotifyPlaybackSelection::isTrackURI(trackURI))
        return false;
    for (int i = 0; i < tries; ++i) {
        if (i > 0)
            QThread::msleep(tryIntervalMs);
        const Snapshot now = bridge.fetch(Source::spotify);
        if (now.playing && now.trackURI == trackURI)
            return true;
    }
    return false;
}

std::optional<QString> SpotifyPlayRequest::playVerified(PlayerBridge& bridge,
                                                        const QString& trackURI) {
    // Checked again where the URI leaves the program, whatever the caller validated.
    if (!SpotifyPlaybackSelection::isTrackURI(trackURI))
        return QStringLiteral("This track cannot be played in Spotify.");
    // The client takes no list over MPRIS: given one, it opens the list and does not start the
    // song. So the song is opened alone.
    if (!bridge.openUri(Source::spotify, trackURI))
        return clientFailedMessage;
    QThread::msleep(tryIntervalMs);
    if (!readBack(bridge, trackURI, playTries))
        return clientFailedMessage;
    return std::nullopt;
}

QCoro::Task<void> SpotifyPlayRequest::play(SpotifyPlaybackSelection selection) {
    MusicController* controller = m_player.controller();
    if (!controller)
        throw SpotifyFailure(PlayerState::setupMessage);
    // The display goes to the Spotify side, and to the song, at once.
    controller->setSpotifySelected(true);
    controller->apply(controller->lastSpotify(), controller->lastSampledAt());
    const QUuid id = controller->renewSpotifyRequestID();
    controller->setSpotifyStartPending(true);
    controller->clearEmptySnapshotSince();
    controller->expectTrack(selection.trackURI, m_clock.now() + expectedTrackWait);
    if (selection.title) {
        m_player.publishTitle(*selection.title);
        m_player.publishArtist(selection.artist.value_or(QString()));
        m_player.publishSourceName(QStringLiteral("Spotify"));
        m_player.publishTrackURI(selection.trackURI);
        m_player.setAnchor(0);
        m_player.setPlaying(true);
    }

    QPointer<MusicController> owner(controller);
    const auto stale = [owner, id] { return !owner || owner->spotifyRequestID() != id; };
    // Every call below is made before its co_await, never inside it: GCC 12 destroys the
    // temporaries of a co_await expression twice.
    SpotifyPlaybackStart start;
    try {
        auto starting =
            m_library.startPlayback(selection.trackURI, selection.contextURI, selection.album,
                                    controller->lastSpotify().trackURI);
        start = co_await std::move(starting);
    } catch (const SpotifyError&) {
        start = {}; // the session was reset meanwhile: Connect cannot be used now
    }
    if (stale())
        throw SpotifyCancellation();

    using Outcome = SpotifyPlaybackStart::Outcome;
    if (start.outcome == Outcome::unavailable) {
        auto fallback = playThroughClient(selection.trackURI, id);
        co_await std::move(fallback);
        co_return;
    }
    if (start.outcome == Outcome::failed) {
        finish(*controller, start.message, true);
        co_return;
    }
    const bool queued = start.outcome == Outcome::queued;
    if (queued)
        FocusLog::shared().logCommand(QStringLiteral("Spotify: next track (to the queued song)"));
    PlayerBridge* bridge = &controller->bridge();
    auto reading =
        onQueue<bool>(controller->playQueue(), [bridge, queued, uri = selection.trackURI] {
            if (queued)
                bridge->command(Source::spotify, QStringLiteral("next track"));
            return readBack(*bridge, uri, readBackTries);
        });
    const bool playing = co_await std::move(reading);
    if (stale())
        throw SpotifyCancellation();
    if (playing) {
        finish(*controller, std::nullopt, true);
        co_return;
    }
    bool reported = false;
    try {
        auto checking = m_library.checkPlayback(selection.trackURI);
        reported = co_await std::move(checking);
    } catch (const SpotifyError&) {
    }
    if (stale())
        throw SpotifyCancellation();
    finish(*controller, reported ? std::nullopt : std::optional(notStartedMessage), true);
}

void SpotifyPlayRequest::finish(MusicController& controller, const std::optional<QString>& failure,
                                bool throughConnect) {
    controller.setSpotifyStartPending(false);
    if (throughConnect)
        FocusLog::shared().logLine(
            failure ? QStringLiteral("Spotify Connect couldn't start the song: ") + *failure
                    : QStringLiteral("Spotify Connect started the song"));
    controller.requestPoll();
    if (!failure) {
        // The expected track stays, for a sample to confirm it or for its time to run out.
        m_player.publishSpotifyPlaybackError(std::nullopt);
        return;
    }
    controller.clearExpectedTrack();
    m_player.publishSpotifyPlaybackError(failure);
    throw SpotifyFailure(*failure);
}

QCoro::Task<void> SpotifyPlayRequest::playThroughClient(QString trackURI, QUuid id) {
    MusicController* controller = m_player.controller();
    QPointer<MusicController> owner(controller);
    const auto stale = [owner, id] { return !owner || owner->spotifyRequestID() != id; };
    FocusLog::shared().logCommand(QStringLiteral("FALLBACK MPRIS play track ") + trackURI);
    m_guard.begin();
    PlayerBridge* bridge = &controller->bridge();
    auto playing = onQueue<std::optional<QString>>(
        controller->playQueue(), [bridge, trackURI] { return playVerified(*bridge, trackURI); });
    const std::optional<QString> failure = co_await std::move(playing);
    m_guard.release();
    if (stale())
        throw SpotifyCancellation();
    finish(*controller, failure, false);
}

} // namespace MirlPlayer

#include "SpotifyPlayRequest.moc"
