#pragma once

#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "core/Clock.h"
#include "playback/PlaybackClock.h"
#include "playback/SpotifyPlaybackSelection.h"

#include <QColor>
#include <QCoro/QCoroTask>
#include <QImage>
#include <QObject>
#include <QTimer>
#include <QUrl>
#include <QUuid>
#include <functional>
#include <memory>
#include <optional>

namespace MirlPlayer {

class MusicController;
class PlayerBridge;

// The observable model of what plays now. Every view reads it, and it is the only way views
// command playback. The truth sits in another process and arrives late, so the position is
// extrapolated from an anchor, commands act at once, and late samples that would undo them are
// refused: a play hold, a pending seek token, a poll cutoff and a monotonic sample stamp.
// GUI thread only.
class PlayerState : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(QString artist READ artist NOTIFY artistChanged)
    Q_PROPERTY(QString album READ album NOTIFY albumChanged)
    Q_PROPERTY(QImage artwork READ artwork NOTIFY artworkChanged)
    Q_PROPERTY(bool hasArtwork READ hasArtwork NOTIFY artworkChanged)
    Q_PROPERTY(QColor accent READ accent NOTIFY accentChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(QString sourceName READ sourceName NOTIFY sourceNameChanged)
    Q_PROPERTY(QString trackURI READ trackURIText NOTIFY trackURIChanged)
    Q_PROPERTY(QString spotifyPlaybackError READ spotifyPlaybackErrorText NOTIFY
                   spotifyPlaybackErrorChanged)
    Q_PROPERTY(MirlPlayer::PlaybackClock* clock READ clock CONSTANT)
    // The clock brought up to now, for readers that come when they like (the bus service).
    Q_PROPERTY(double position READ livePosition)
    Q_PROPERTY(MirlPlayer::LevelsStore* eqStore READ eqStore CONSTANT)
    Q_PROPERTY(MirlPlayer::StereoStore* stereoStore READ stereoStore CONSTANT)

public:
    static inline const QString idleTitle = QStringLiteral("Nothing Playing");
    static inline const QString idleArtist = QStringLiteral("Open Spotify or your music player");
    static inline const QString setupMessage =
        QStringLiteral("Finish setting up MIRL PRO first, then you can play music.");
    static constexpr double playHold = 0.9;
    static constexpr double positionTickInterval = 1.0 / 6.0;
    static constexpr double fadeTickInterval = 1.0 / 30.0;

    // `bridge` is the way to the players; it is used only once start() has run.
    explicit PlayerState(PlayerBridge* bridge, Clock& clock = Clock::system(),
                         QObject* parent = nullptr);
    ~PlayerState() override;

    bool isPlaying() const { return m_isPlaying; }
    QString title() const { return m_title; }
    QString artist() const { return m_artist; }
    QString album() const { return m_album; }
    QImage artwork() const { return m_artwork; }
    bool hasArtwork() const { return !m_artwork.isNull(); }
    QColor accent() const { return m_accent; }
    double duration() const { return m_duration; }
    QString sourceName() const { return m_sourceName; }
    const std::optional<QString>& trackURI() const { return m_trackURI; }
    QString trackURIText() const { return m_trackURI.value_or(QString()); }
    const std::optional<QString>& spotifyPlaybackError() const { return m_spotifyPlaybackError; }
    QString spotifyPlaybackErrorText() const { return m_spotifyPlaybackError.value_or(QString()); }
    PlaybackClock* clock() const { return m_clock.get(); }
    LevelsStore* eqStore() { return &m_eqStore; }
    StereoStore* stereoStore() { return &m_stereoStore; }
    double lastAudioAt() const { return m_lastAudioAt; }
    MusicController* controller() const { return m_controller.get(); }
    Clock& time() const { return m_time; }

    // The gate to the players: creates the controller, wires the audio engine and starts the
    // position tick. Does nothing when already started.
    void start();

    // Transport.
    Q_INVOKABLE void togglePlayPause();
    Q_INVOKABLE void next();
    Q_INVOKABLE void previous();
    Q_INVOKABLE void seek(double seconds);
    void finishSeek(const QUuid& token, double stamp);
    Q_INVOKABLE void openSource();
    Q_INVOKABLE void openSpotify(const QString& url = {});

    // Plays a track in Spotify. Throws SpotifyFailure with a sentence for the user, or
    // SpotifyCancellation when a newer request replaced this one. Before setup has finished it
    // throws "Finish setting up MIRL PRO first, then you can play music."
    QCoro::Task<void> playSpotify(SpotifyPlaybackSelection selection);
    // The road a play request takes once the player is started.
    using PlayRequester = std::function<QCoro::Task<void>(const SpotifyPlaybackSelection&)>;
    void setPlayRequester(PlayRequester requester) { m_playRequester = std::move(requester); }

    // Called by the controller with each sample.
    void setPlaying(bool value);
    void setAnchor(double position);
    void applySample(double sampledAt, bool trackChanged, double position);
    // One step of the position clock; the timer calls it six times a second.
    void tickPosition();
    // The clock after a step now: what a reader outside the views wants.
    double livePosition();
    // Whether `viewer` shows the position on screen. The tick runs only while some viewer does
    // and the track plays; nothing else needs the clock to move on its own.
    void setPositionShown(const QObject* viewer, bool shown);
    bool positionTicking() const { return m_interpTimer.isActive(); }

    // Levels from the audio engine (GUI thread).
    void noteLevels(const QList<double>& levels);
    // Whether anything on screen shows levels; the idle fade runs only then.
    void setNeedsAudio(bool needsAudio);
    // One step of the idle fade (1/30 s); returns whether the fade needs further steps. The
    // timer runs only while a fade can still move the levels, and while live levels hold the
    // fade off it waits for the hold-off to pass rather than ticking.
    bool tickFade();
    bool fadeRunning() const { return m_eqTimer.isActive(); }
    // When the fade's timer is due next, in seconds (its interval); meaningful while it runs.
    double fadeWait() const { return m_eqTimer.interval() / 1000.0; }

    // Publication, compared before written. Used by the controller.
    void publishPlaying(bool value);
    void publishTitle(const QString& value);
    void publishArtist(const QString& value);
    void publishAlbum(const QString& value);
    void publishArtwork(const QImage& value);
    void publishAccent(const QColor& value);
    void publishDuration(double value);
    void publishSourceName(const QString& value);
    void publishTrackURI(const std::optional<QString>& value);
    void publishSpotifyPlaybackError(const std::optional<QString>& value);

    // Extension points filled by the subsystems that build on this one.
    // Runs during start(), after the controller exists: the audio engine wiring.
    void setAudioEngineStarter(std::function<void(PlayerState&)> starter) {
        m_audioEngineStarter = std::move(starter);
    }
    // Asked by next() while Spotify plays; answers true when the song queue took over.
    void setQueueAdvance(std::function<bool(PlayerState&)> advance) {
        m_queueAdvance = std::move(advance);
    }

    // Seek and clock state, readable for tests and diagnostics.
    std::optional<QUuid> pendingSeek() const { return m_pendingSeek; }
    double positionPollCutoff() const { return m_positionPollCutoff; }
    double playHoldUntil() const { return m_playHoldUntil; }

Q_SIGNALS:
    void isPlayingChanged();
    void titleChanged();
    void artistChanged();
    void albumChanged();
    void artworkChanged();
    void accentChanged();
    void durationChanged();
    void sourceNameChanged();
    void trackURIChanged();
    void spotifyPlaybackErrorChanged();
    void started();

private:
    PlayerBridge* m_bridge;
    Clock& m_time;

    bool m_isPlaying = false;
    QString m_title = idleTitle;
    QString m_artist = idleArtist;
    QString m_album;
    QImage m_artwork;
    QColor m_accent = Qt::white;
    double m_duration = 0;
    std::unique_ptr<PlaybackClock> m_clock;
    QString m_sourceName;
    std::optional<QString> m_trackURI;
    std::optional<QString> m_spotifyPlaybackError;
    std::unique_ptr<MusicController> m_controller;
    double m_anchorPos = 0;
    double m_anchorTime;
    void updatePositionTick();
    // Starts the fade's timer for its next moment: the end of the hold-off, or the next step.
    void armFade();

    QTimer m_interpTimer;
    QList<const QObject*> m_positionViewers;
    bool m_started = false;
    std::optional<QUuid> m_pendingSeek;
    double m_positionPollCutoff = Clock::distantPast;
    double m_lastPositionSample = Clock::distantPast;
    double m_playHoldUntil = Clock::distantPast;
    LevelsStore m_eqStore;
    StereoStore m_stereoStore;
    QTimer m_eqTimer;
    double m_lastAudioAt = Clock::distantPast;
    bool m_needsAudio = false;

    std::function<void(PlayerState&)> m_audioEngineStarter;
    std::function<bool(PlayerState&)> m_queueAdvance;
    PlayRequester m_playRequester;
};

} // namespace MirlPlayer
