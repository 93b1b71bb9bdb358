#include "playback/MusicController.h"

#include "core/FocusLog.h"
#include "platform/PlayerBridge.h"
#include "playback/PlayerState.h"

#include <QTimer>

namespace MirlPlayer {

MusicController::MusicController(PlayerState& state, PlayerBridge& bridge, Clock& clock)
    : m_state(state)
    , m_bridge(bridge)
    , m_clock(clock) {
    FocusLog::shared().installFocusWatch();
    m_queue.sync([this] {
        m_pollTimer = new QTimer(m_queue.context());
        m_pollTimer->setTimerType(Qt::PreciseTimer);
        QObject::connect(m_pollTimer, &QTimer::timeout, m_queue.context(), [this] {
            if (m_pollTimer->interval() != int(m_pollRepeat * 1000))
                m_pollTimer->setInterval(int(m_pollRepeat * 1000));
            poll();
        });
        schedulePolls(firstPollDelay, fastPollInterval);
    });
    // The players' own change announcements give an instant reaction on any cadence; the timer
    // is the safety net and the source of fresh positions.
    m_bridge.setChangeHandler([this] { requestPoll(); });
}

MusicController::~MusicController() {
    m_bridge.setChangeHandler({});
    m_queue.sync([this] {
        delete m_pollTimer;
        m_pollTimer = nullptr;
    });
}

void MusicController::schedulePolls(double first, double repeat) {
    m_pollRepeat = repeat;
    m_pollTimer->start(int(first * 1000));
}

void MusicController::requestPoll() {
    m_queue.async([this] { poll(); });
}

void MusicController::setPollingFast(bool fast) {
    m_queue.async([this, fast] {
        if (m_pollingFast == fast)
            return;
        m_pollingFast = fast;
        if (fast)
            schedulePolls(fastFirstPoll, fastPollInterval);
        else
            schedulePolls(slowPollInterval, slowPollInterval);
    });
}

MusicController::PollSchedule MusicController::pollSchedule() {
    PollSchedule schedule{};
    m_queue.sync([&] { schedule = {m_pollTimer->remainingTime(), m_pollTimer->interval()}; });
    return schedule;
}

void MusicController::poll() {
    // Stamped before the players are asked, so that the sample is never newer than its stamp.
    const double sampledAt = m_clock.now();
    const Snapshot spotify = m_bridge.fetch(Source::spotify);
    const Snapshot music = m_bridge.fetch(Source::music);
    onMain(this, [this, spotify, music, sampledAt] { merge(spotify, music, sampledAt); });
}

void MusicController::merge(const Snapshot& spotify, const Snapshot& music, double sampledAt) {
    // The user started Music by hand: that ends the program's commitment to Spotify, unless the
    // library browser is open.
    if (!m_routing.browserActive && music.playing && !m_routing.musicWasPlaying && !spotify.playing)
        m_routing.spotifySelected = false;
    m_routing.musicWasPlaying = music.playing;
    m_lastSampledAt = sampledAt;
    m_lastSpotify = spotify;
    m_lastMusic = music;
    const Source preference = m_routing.spotifyPreferred() ? Source::spotify : Source::none;
    apply(pickWinner(preference, spotify, music), sampledAt);
}

Snapshot MusicController::pickWinner(Source preference, const Snapshot& spotify,
                                     const Snapshot& music) {
    if (preference == Source::spotify)
        return spotify;
    if (preference == Source::music)
        return music;
    if (spotify.playing)
        return spotify;
    if (music.playing)
        return music;
    if (spotify.hasTrack)
        return spotify;
    if (music.hasTrack)
        return music;
    return Snapshot::empty(Source::none);
}

void MusicController::setBrowserActive(bool active) {
    m_routing.browserActive = active;
    const Source preference = m_routing.spotifyPreferred() ? Source::spotify : Source::none;
    apply(pickWinner(preference, m_lastSpotify, m_lastMusic), m_lastSampledAt);
}

void MusicController::expectTrack(const QString& uri, double until) {
    m_expectedTrack = ExpectedTrack{uri, until};
}

void MusicController::apply(const Snapshot& snapshot, double sampledAt) {
    const double now = m_clock.now();

    // Gate 1: while a play request runs, samples of the old track would undo its optimistic
    // display.
    if (m_expectedTrack) {
        if (!m_spotifyStartPending && now >= m_expectedTrack->until)
            m_expectedTrack.reset();
        else if (snapshot.trackURI && *snapshot.trackURI == m_expectedTrack->uri)
            m_expectedTrack.reset();
        else
            return;
    }

    // Gate 2: Spotify replies empty for a moment between tracks; keep the display for a second.
    if (!snapshot.hasTrack && m_state.trackURI().has_value()) {
        if (!m_emptySnapshotSince)
            m_emptySnapshotSince = now;
        if (now - *m_emptySnapshotSince < emptyGrace)
            return;
    } else {
        m_emptySnapshotSince.reset();
    }

    if (m_queueObserver)
        m_queueObserver(snapshot);
    m_activeSource = snapshot.source;

    if (snapshot.hasTrack) {
        m_state.setPlaying(snapshot.playing);
        m_state.publishTitle(snapshot.title);
        m_state.publishArtist(snapshot.artist);
        m_state.publishAlbum(snapshot.album);
        m_state.publishSourceName(sourceRawValue(snapshot.source));
        m_state.publishTrackURI(snapshot.trackURI);
        m_state.publishDuration(snapshot.durationMs / 1000.0);
        const QString key = sourceRawValue(snapshot.source) + u'|' + snapshot.title + u'|' +
                            snapshot.artist + u'|' + snapshot.album;
        const bool changed = key != m_lastTrackKey;
        // The clock clamps to the duration, so the duration is published first.
        m_state.applySample(sampledAt, changed, snapshot.positionMs / 1000.0);
        if (changed) {
            m_lastTrackKey = key;
            m_artwork.showCoverOf(snapshot, key);
        }
    } else {
        m_state.publishPlaying(false); // bypasses the play hold
        if (m_routing.spotifyPreferred()) {
            m_state.publishTitle(QStringLiteral("Nothing playing in Spotify"));
            m_state.publishArtist(QStringLiteral("Select a song above"));
        } else {
            m_state.publishTitle(PlayerState::idleTitle);
            m_state.publishArtist(PlayerState::idleArtist);
        }
        m_state.publishAlbum({});
        m_state.publishSourceName({});
        m_state.publishTrackURI(std::nullopt);
        m_state.publishDuration(0);
        m_state.setAnchor(0);
        m_artwork.clear(); // the accent stays as it stands
        m_lastTrackKey.clear();
    }
    Q_EMIT sampleApplied();
}

QString MusicController::targetApp() const {
    if (m_routing.spotifyPreferred())
        return sourceRawValue(Source::spotify);
    return m_activeSource == Source::none ? QString() : sourceRawValue(m_activeSource);
}

void MusicController::send(const QString& verb) {
    const QString app = targetApp();
    if (app.isEmpty())
        return;
    FocusLog::shared().logCommand(app + QStringLiteral(": ") + verb);
    const Source source = sourceFromRawValue(app);
    m_queue.async([this, source, verb] {
        m_bridge.command(source, verb);
        poll();
    });
}

void MusicController::seek(const QString& app, double seconds,
                           std::function<void(double)> completion) {
    const Source source = sourceFromRawValue(app);
    m_queue.async([this, source, seconds, completion = std::move(completion)] {
        m_bridge.seek(source, seconds);
        // Stamped after the player moved: samples begun before this are older than the seek.
        const double stamp = m_clock.now();
        onMain(this, [completion, stamp] { completion(stamp); });
        poll();
    });
}

} // namespace MirlPlayer
