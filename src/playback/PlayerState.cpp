#include "playback/PlayerState.h"

#include "core/FocusLog.h"
#include "platform/PlayerBridge.h"
#include "playback/MusicController.h"
#include "spotify/SpotifyError.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

PlayerState::PlayerState(PlayerBridge* bridge, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_bridge(bridge)
    , m_time(clock)
    , m_clock(std::make_unique<PlaybackClock>())
    , m_anchorTime(clock.now()) {
    m_interpTimer.setInterval(int(positionTickInterval * 1000));
    connect(&m_interpTimer, &QTimer::timeout, this, &PlayerState::tickPosition);
    m_eqTimer.setSingleShot(true);
    connect(&m_eqTimer, &QTimer::timeout, this, [this] {
        if (tickFade())
            armFade();
    });
}

PlayerState::~PlayerState() = default;

void PlayerState::start() {
    if (m_controller || !m_bridge)
        return;
    m_controller = std::make_unique<MusicController>(*this, *m_bridge, m_time);
    if (m_audioEngineStarter)
        m_audioEngineStarter(*this);
    m_started = true;
    updatePositionTick();
    Q_EMIT started();
}

void PlayerState::tickPosition() {
    if (!m_isPlaying || m_duration <= 0)
        return; // a paused clock simply stops; the anchor stays
    const double p = std::max(0.0, m_anchorPos + (m_time.now() - m_anchorTime));
    m_clock->setPosition(std::min(m_duration, p));
}

double PlayerState::livePosition() {
    tickPosition();
    return m_clock->position();
}

void PlayerState::setPositionShown(const QObject* viewer, bool shown) {
    m_positionViewers.removeAll(viewer);
    if (shown)
        m_positionViewers.append(viewer);
    updatePositionTick();
}

void PlayerState::updatePositionTick() {
    const bool wanted = m_started && m_isPlaying && !m_positionViewers.isEmpty();
    if (wanted == m_interpTimer.isActive())
        return;
    if (wanted) {
        tickPosition(); // the view shows where the track is now, not a tick later
        m_interpTimer.start();
    } else {
        m_interpTimer.stop();
    }
}

void PlayerState::noteLevels(const QList<double>& levels) {
    m_lastAudioAt = m_time.now();
    m_eqStore.setLevels(levels);
    // When the deliveries stop, the fade takes over from here. The timer is set afresh with
    // each delivery, so that while they come it never fires: restarting it costs less than the
    // wake-up of its firing only to wait again.
    if (m_needsAudio)
        armFade();
}

void PlayerState::armFade() {
    // While levels arrive the fade is held off, so the timer waits out the hold-off from the
    // latest delivery instead of ticking through it: a playing track never wakes it.
    const double sinceAudio = m_time.now() - m_lastAudioAt;
    const double wait = sinceAudio < LevelsStore::fadeHoldoff
                            ? LevelsStore::fadeHoldoff - sinceAudio
                            : fadeTickInterval;
    m_eqTimer.start(std::max(1, int(std::ceil(wait * 1000))));
}

void PlayerState::setNeedsAudio(bool needsAudio) {
    if (m_needsAudio == needsAudio)
        return;
    m_needsAudio = needsAudio;
    if (needsAudio && !m_eqTimer.isActive())
        armFade();
}

bool PlayerState::tickFade() {
    if (!m_needsAudio)
        return false; // nobody shows levels: nothing to fade, the timer sleeps
    const double sinceAudio = m_time.now() - m_lastAudioAt;
    if (m_eqStore.fadeTick(true, sinceAudio))
        return true;
    // Live audio holds the fade off; otherwise every band has settled.
    return sinceAudio < LevelsStore::fadeHoldoff;
}

void PlayerState::setAnchor(double position) {
    m_anchorPos = position;
    m_anchorTime = m_time.now();
    // Moved now rather than on the next tick, so that a seek or a new track shows at once, also
    // while paused.
    double shown = std::max(0.0, position);
    if (m_duration > 0)
        shown = std::min(shown, m_duration);
    m_clock->setPosition(shown);
}

void PlayerState::applySample(double sampledAt, bool trackChanged, double position) {
    if (trackChanged) {
        // A track change outranks everything a seek had arranged.
        m_pendingSeek.reset();
        m_positionPollCutoff = Clock::distantPast;
        m_lastPositionSample = Clock::distantPast;
    }
    if (m_pendingSeek)
        return; // a seek is in flight: no sample can be trusted
    if (sampledAt < m_positionPollCutoff)
        return; // this sample began before the seek finished
    if (sampledAt <= m_lastPositionSample)
        return; // samples may only move forward
    m_lastPositionSample = sampledAt;
    setAnchor(position);
}

void PlayerState::setPlaying(bool value) {
    // During the hold after a click, a sample taken before the player reacted is refused.
    if (m_time.now() < m_playHoldUntil && m_isPlaying != value)
        return;
    publishPlaying(value);
}

void PlayerState::togglePlayPause() {
    publishPlaying(!m_isPlaying);
    m_playHoldUntil = m_time.now() + playHold;
    if (m_controller)
        m_controller->send(QStringLiteral("playpause"));
}

void PlayerState::next() {
    if (m_sourceName == u"Spotify" && m_queueAdvance && m_queueAdvance(*this))
        return; // the song queue took over
    if (m_controller)
        m_controller->send(QStringLiteral("next track"));
}

void PlayerState::previous() {
    if (m_controller)
        m_controller->send(QStringLiteral("previous track"));
}

void PlayerState::seek(double seconds) {
    double t = std::max(seconds, 0.0);
    if (m_duration > 0)
        t = std::min(t, m_duration);
    const QUuid token = QUuid::createUuid();
    m_pendingSeek = token;
    setAnchor(t);
    if (!m_controller) {
        finishSeek(token, m_time.now());
        return;
    }
    const QString app = m_controller->targetApp();
    if (app.isEmpty()) {
        finishSeek(token, m_time.now());
        return;
    }
    FocusLog::shared().logCommand(app + QStringLiteral(": seek"));
    QPointer<PlayerState> self(this);
    m_controller->seek(app, t, [self, token](double stamp) {
        if (self)
            self->finishSeek(token, stamp);
    });
}

void PlayerState::finishSeek(const QUuid& token, double stamp) {
    // With rapid dragging only the newest seek reopens the door to samples.
    if (m_pendingSeek != token)
        return;
    m_pendingSeek.reset();
    m_positionPollCutoff = stamp;
}

QCoro::Task<void> PlayerState::playSpotify(SpotifyPlaybackSelection selection) {
    if (!m_controller)
        throw SpotifyFailure(setupMessage);
    publishSpotifyPlaybackError(std::nullopt);
    if (!m_playRequester)
        throw SpotifyFailure(QStringLiteral("Spotify didn’t start this song. Try again."));
    co_await m_playRequester(selection);
}

void PlayerState::openSource() {
    FocusLog::shared().logCommand(QStringLiteral("OPEN source app on purpose (") + m_sourceName +
                                  u')');
    if (m_bridge)
        m_bridge->openApplication(m_sourceName == u"Music" ? Source::music : Source::spotify);
}

void PlayerState::openSpotify(const QString& url) {
    FocusLog::shared().logCommand(QStringLiteral("OPEN Spotify on purpose (") +
                                  (url.isEmpty() ? QStringLiteral("app") : url) + u')');
    if (!m_bridge)
        return;
    const QUrl parsed(url);
    if (!url.isEmpty() && parsed.isValid() && parsed.scheme() == u"spotify") {
        m_bridge->openUrl(parsed);
        return;
    }
    m_bridge->openApplication(Source::spotify);
}

void PlayerState::publishPlaying(bool value) {
    if (m_isPlaying == value)
        return;
    m_isPlaying = value;
    updatePositionTick();
    Q_EMIT isPlayingChanged();
}

void PlayerState::publishTitle(const QString& value) {
    if (m_title == value)
        return;
    m_title = value;
    Q_EMIT titleChanged();
}

void PlayerState::publishArtist(const QString& value) {
    if (m_artist == value)
        return;
    m_artist = value;
    Q_EMIT artistChanged();
}

void PlayerState::publishAlbum(const QString& value) {
    if (m_album == value)
        return;
    m_album = value;
    Q_EMIT albumChanged();
}

void PlayerState::publishArtwork(const QImage& value) {
    // Images are compared by identity: the same cached image is not announced again.
    if (m_artwork.cacheKey() == value.cacheKey() || (m_artwork.isNull() && value.isNull()))
        return;
    m_artwork = value;
    Q_EMIT artworkChanged();
}

void PlayerState::publishAccent(const QColor& value) {
    if (m_accent == value)
        return;
    m_accent = value;
    Q_EMIT accentChanged();
}

void PlayerState::publishDuration(double value) {
    if (m_duration == value)
        return;
    m_duration = value;
    Q_EMIT durationChanged();
}

void PlayerState::publishSourceName(const QString& value) {
    if (m_sourceName == value)
        return;
    m_sourceName = value;
    Q_EMIT sourceNameChanged();
}

void PlayerState::publishTrackURI(const std::optional<QString>& value) {
    if (m_trackURI == value)
        return;
    m_trackURI = value;
    Q_EMIT trackURIChanged();
}

void PlayerState::publishSpotifyPlaybackError(const std::optional<QString>& value) {
    if (m_spotifyPlaybackError == value)
        return;
    m_spotifyPlaybackError = value;
    Q_EMIT spotifyPlaybackErrorChanged();
}

} // namespace MirlPlayer
