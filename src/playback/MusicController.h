#pragma once

#include "core/Clock.h"
#include "core/SerialQueue.h"
#include "playback/ArtworkFetcher.h"
#include "playback/Snapshot.h"

#include <QObject>
#include <QPointer>
#include <QUuid>
#include <functional>
#include <optional>

class QTimer;

namespace MirlPlayer {

class PlayerBridge;
class PlayerState;

// Which side the program itself has committed to.
struct PlaybackSourceRouting {
    bool browserActive = false;   // the library browser is open
    bool spotifySelected = false; // a play request began, or the song queue handed off
    bool musicWasPlaying = false; // the last sample of Music was playing
    bool spotifyPreferred() const { return browserActive || spotifySelected; }
};

// The one object that talks to the players. It samples both, merges the two samples into one
// current truth, writes that truth into PlayerState and carries out commands. Sampling and
// commands run on the serial queue "notch.music.poll"; everything else on the GUI thread.
class MusicController : public QObject {
    Q_OBJECT
public:
    static constexpr double firstPollDelay = 0.2;
    static constexpr double fastPollInterval = 1.0;
    static constexpr double fastFirstPoll = 0.05;
    static constexpr double slowPollInterval = 3.0;
    static constexpr double emptyGrace = 1.0;

    MusicController(PlayerState& state, PlayerBridge& bridge, Clock& clock = Clock::system());
    ~MusicController() override;

    // GUI thread.
    void setBrowserActive(bool active);
    void setPollingFast(bool fast); // hops to the poll queue
    void send(const QString& verb);
    QString targetApp() const;
    // Runs the seek on the poll queue; `completion` gets, on the GUI thread, the time the
    // player was moved.
    void seek(const QString& app, double seconds, std::function<void(double stamp)> completion);

    // Poll queue: one sample of both players.
    void poll();
    // Asks the poll queue for a sample now (from any thread).
    void requestPoll();

    // GUI thread: the steps of one sample, public so that they can be driven directly.
    void merge(const Snapshot& spotify, const Snapshot& music, double sampledAt);
    void apply(const Snapshot& snapshot, double sampledAt);
    static Snapshot pickWinner(Source preference, const Snapshot& spotify, const Snapshot& music);

    // Play requests mark the track they wait for (the requests themselves build on this).
    void expectTrack(const QString& uri, double until);
    void clearExpectedTrack() { m_expectedTrack.reset(); }
    bool expectingTrack() const { return m_expectedTrack.has_value(); }
    void clearEmptySnapshotSince() { m_emptySnapshotSince.reset(); }
    void setSpotifyStartPending(bool pending) { m_spotifyStartPending = pending; }
    bool spotifyStartPending() const { return m_spotifyStartPending; }
    // Makes a new play request the newest; an older one finds its copy stale and leaves.
    QUuid renewSpotifyRequestID() { return m_spotifyRequestID = QUuid::createUuid(); }
    const QUuid& spotifyRequestID() const { return m_spotifyRequestID; }
    void setSpotifySelected(bool selected) { m_routing.spotifySelected = selected; }

    // The covers, and the colours they give the accent and the theme.
    ArtworkFetcher& artwork() { return m_artwork; }

    // The song queue is told about every applied snapshot.
    using QueueObserver = std::function<void(const Snapshot&)>;
    void setQueueObserver(QueueObserver observer) { m_queueObserver = std::move(observer); }

    const PlaybackSourceRouting& routing() const { return m_routing; }
    Source activeSource() const { return m_activeSource; }
    const Snapshot& lastSpotify() const { return m_lastSpotify; }
    const Snapshot& lastMusic() const { return m_lastMusic; }
    double lastSampledAt() const { return m_lastSampledAt; }
    const QString& lastTrackKey() const { return m_lastTrackKey; }
    int artCacheSize() const { return m_artwork.cacheSize(); }
    // When the next sample is due (milliseconds from now) and the poll timer's interval as it
    // stands, read through a sync hop to the poll queue.
    struct PollSchedule {
        int nextInMs;
        int intervalMs;
    };
    PollSchedule pollSchedule();
    SerialQueue& queue() { return m_queue; }
    // Play requests and their read-back, so that a slow request never delays sampling.
    SerialQueue& playQueue() { return m_playQueue; }
    PlayerBridge& bridge() { return m_bridge; }

Q_SIGNALS:
    // A sample was applied (for observers such as the program's bus service and tests).
    void sampleApplied();

private:
    void schedulePolls(double first, double repeat); // poll queue

    PlayerState& m_state;
    PlayerBridge& m_bridge;
    Clock& m_clock;
    SerialQueue m_queue{QStringLiteral("notch.music.poll"), QThread::HighPriority};
    SerialQueue m_playQueue{QStringLiteral("notch.music.play"), QThread::HighPriority};
    QTimer* m_pollTimer = nullptr; // lives on m_queue
    double m_pollRepeat = fastPollInterval;
    Source m_activeSource = Source::none;
    PlaybackSourceRouting m_routing;
    QUuid m_spotifyRequestID = QUuid::createUuid();
    struct ExpectedTrack {
        QString uri;
        double until;
    };
    std::optional<ExpectedTrack> m_expectedTrack;
    bool m_spotifyStartPending = false;
    std::optional<double> m_emptySnapshotSince;
    Snapshot m_lastSpotify = Snapshot::empty(Source::spotify);
    Snapshot m_lastMusic = Snapshot::empty(Source::music);
    double m_lastSampledAt = Clock::distantPast;
    QString m_lastTrackKey;
    bool m_pollingFast = true; // poll queue only
    ArtworkFetcher m_artwork{m_state, m_queue};
    QueueObserver m_queueObserver;
};

} // namespace MirlPlayer
