#pragma once

#include "core/Clock.h"
#include "playback/QueueHandoffTiming.h"
#include "playback/SpotifyPlaybackSelection.h"
#include "spotify/SpotifyItem.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QVariantList>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

namespace MirlPlayer {

class PlayerState;
struct Snapshot;

// The resolving of the first song into a play request, started early and shared by whoever
// needs it while it is fresh.
class QueuePreparation : public QObject {
    Q_OBJECT
public:
    QString uri;
    double startedAt = 0;
    bool done = false;
    bool cancelled = false;
    std::optional<SpotifyPlaybackSelection> selection;
    std::exception_ptr error;
Q_SIGNALS:
    void finished();
};

// Spotify's own queue cannot be read or reordered from outside, so the program keeps its own: an
// ordered list of upcoming songs, in memory only, that it plays itself by making a play request at
// the end of the current song. It never polls: each Spotify snapshot the controller applies drives
// it, so it works only while the program runs, and the view says so. GUI thread only.
class SpotifyQueue : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantList tracks READ trackList NOTIFY tracksChanged)
    Q_PROPERTY(int count READ count NOTIFY tracksChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(QString error READ errorText NOTIFY errorChanged)
    Q_PROPERTY(QString caption READ caption CONSTANT)
    Q_PROPERTY(QString emptyText READ emptyText CONSTANT)

public:
    // A resolved play request is short-lived: after this many seconds it is made afresh.
    static constexpr double preparationLifetime = 15.0;
    // The wake-up hands off only this near the end, by the program's own clock.
    static constexpr double handoffWithin = 0.5;

    // Turns a queued song and the URI playing now into a play request.
    using Resolver = std::function<QCoro::Task<SpotifyPlaybackSelection>(
        SpotifyItem item, std::optional<QString> playingURI)>;

    explicit SpotifyQueue(Clock& clock = Clock::system(), QObject* parent = nullptr);
    ~SpotifyQueue() override;
    static SpotifyQueue& shared();
    // Makes the shared queue the QML singleton `SongQueue` in "MirlPlayer.Playback" 1.0, for the
    // queue page and the per-song queue buttons. Once, on the GUI thread, before loading QML.
    static void registerForQml();

    // By default a song becomes a request with its own texts and its album as the context. Not
    // the browser's selection of the list it was picked from: the queue keeps songs, and it
    // plays one when the song before it ends, while the browser may show another list by then.
    void setResolver(Resolver resolver) { m_resolver = std::move(resolver); }
    // A song's request with its texts for the card and its album; in `context` when given.
    static SpotifyPlaybackSelection selectionOf(const SpotifyItem& item,
                                                const std::optional<QString>& context = {});

    // Lets each applied snapshot of the player drive the queue, and the player's "next" ask it
    // first. Once per player.
    void attach(PlayerState& player);

    const QList<SpotifyItem>& tracks() const { return m_tracks; }
    QVariantList trackList() const;
    int count() const { return int(m_tracks.size()); }
    bool busy() const { return m_busy; }
    const std::optional<QString>& error() const { return m_error; }
    QString errorText() const { return m_error.value_or(QString()); }
    static QString caption();
    static QString emptyText();
    Q_INVOKABLE bool contains(const QString& uri) const;
    const QueueHandoffTiming& handoff() const { return m_handoff; }
    bool boundaryArmed() const { return m_boundary.isActive(); }

    // Each applied Spotify snapshot (seconds).
    void observe(const std::optional<QString>& uri, bool playing, PlayerState& player,
                 double position, double duration);
    // A snapshot of another source: no boundary of Spotify's is near.
    void forgetHandoff();
    // Starts the next song now. False when the queue is empty (the caller skips as usual); true
    // when it took over or a handoff already runs.
    bool advance(PlayerState& player);

    // Edits; all are dropped while a handoff runs.
    void toggle(const SpotifyItem& item);
    void remove(const SpotifyItem& item);
    void move(const SpotifyItem& item, int offset);
    Q_INVOKABLE void clear();
    // The view's row actions, by position.
    Q_INVOKABLE void removeAt(int index);
    Q_INVOKABLE void moveAt(int index, int offset);
    // The per-song queue button, given a row of a library list (its "uri", "name", "subtitle",
    // "albumURI" and "artistNames").
    Q_INVOKABLE void toggleSong(const QVariantMap& row);
    // The view's "Play next", with the attached player.
    Q_INVOKABLE bool playNext();

    // The resolving of `item`, reused while fresh.
    std::shared_ptr<QueuePreparation> prepare(const SpotifyItem& item, PlayerState& player);
    const std::shared_ptr<QueuePreparation>& preparation() const { return m_preparation; }

    // The armed wake-up at the expected end of `uri` (called by its timer).
    void boundaryReached(const QString& uri, PlayerState& player);

Q_SIGNALS:
    void tracksChanged();
    void busyChanged();
    void errorChanged();

private:
    QCoro::Task<void> handOff(std::shared_ptr<QueuePreparation> preparation,
                              QPointer<PlayerState> player);
    void dropStalePreparation();
    void cancelPreparation();
    void setTracks(QList<SpotifyItem> tracks);
    void setBusy(bool busy);
    void setError(std::optional<QString> error);

    Clock& m_clock;
    QList<SpotifyItem> m_tracks;
    bool m_busy = false;
    std::optional<QString> m_error;
    QueueHandoffTiming m_handoff;
    QTimer m_boundary;
    std::function<void()> m_onBoundary;
    std::shared_ptr<QueuePreparation> m_preparation;
    Resolver m_resolver;
    QPointer<PlayerState> m_player;
};

} // namespace MirlPlayer
