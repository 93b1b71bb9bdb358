#include "playback/SpotifyQueue.h"

#include "playback/MusicController.h"
#include "playback/PlayerState.h"
#include "playback/Snapshot.h"
#include "spotify/SpotifyError.h"

#include <QCoro/QCoroSignal>
#include <QQmlEngine>

namespace MirlPlayer {

namespace {

QCoro::Task<void> resolveInto(std::shared_ptr<QueuePreparation> preparation,
                              SpotifyQueue::Resolver resolver, SpotifyItem item,
                              std::optional<QString> playingURI) {
    try {
        auto resolving = resolver(item, playingURI);
        SpotifyPlaybackSelection selection = co_await std::move(resolving);
        if (!preparation->cancelled)
            preparation->selection = selection;
    } catch (...) {
        preparation->error = std::current_exception();
    }
    if (preparation->done)
        co_return; // cancelled meanwhile; the waiters were told then
    preparation->done = true;
    Q_EMIT preparation->finished();
}

QCoro::Task<SpotifyPlaybackSelection> resolveByItself(SpotifyItem item, std::optional<QString>) {
    co_return SpotifyQueue::selectionOf(item);
}

} // namespace

SpotifyQueue::SpotifyQueue(Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_resolver(resolveByItself) {
    m_boundary.setSingleShot(true);
    m_boundary.setTimerType(Qt::PreciseTimer);
    connect(&m_boundary, &QTimer::timeout, this, [this] {
        if (m_onBoundary)
            m_onBoundary();
    });
}

SpotifyQueue::~SpotifyQueue() {
    cancelPreparation();
}

SpotifyQueue& SpotifyQueue::shared() {
    static auto* queue = new SpotifyQueue(Clock::system());
    return *queue;
}

void SpotifyQueue::registerForQml() {
    qmlRegisterSingletonInstance("MirlPlayer.Playback", 1, 0, "SongQueue", &shared());
}

SpotifyPlaybackSelection SpotifyQueue::selectionOf(const SpotifyItem& item,
                                                   const std::optional<QString>& context) {
    SpotifyPlaybackSelection selection(item.uri, context);
    selection.title = item.name;
    if (!item.artistNames.isEmpty())
        selection.artist = item.artistNames.join(QStringLiteral(", "));
    else if (!item.subtitle.isEmpty())
        selection.artist = item.subtitle;
    selection.album = item.albumURI;
    return selection;
}

void SpotifyQueue::attach(PlayerState& player) {
    m_player = &player;
    player.setQueueAdvance([this](PlayerState& state) { return advance(state); });
    auto observeController = [this, player = QPointer<PlayerState>(&player)] {
        if (!player || !player->controller())
            return;
        player->controller()->setQueueObserver([this, player](const Snapshot& snapshot) {
            if (!player)
                return;
            if (snapshot.source == Source::spotify)
                observe(snapshot.trackURI, snapshot.playing, *player, snapshot.positionMs / 1000.0,
                        snapshot.durationMs / 1000.0);
            else
                forgetHandoff();
        });
    };
    if (player.controller())
        observeController();
    else
        connect(&player, &PlayerState::started, this, observeController);
}

QVariantList SpotifyQueue::trackList() const {
    QVariantList list;
    for (const SpotifyItem& item : m_tracks)
        list.append(QVariantMap{{QStringLiteral("uri"), item.uri},
                                {QStringLiteral("title"), item.name},
                                {QStringLiteral("subtitle"), item.subtitle}});
    return list;
}

QString SpotifyQueue::caption() {
    return QStringLiteral("Upcoming songs in MIRL. Keep MIRL open to play this queue.");
}

QString SpotifyQueue::emptyText() {
    return QStringLiteral("Use the queue button beside a song to add it here.");
}

bool SpotifyQueue::contains(const QString& uri) const {
    return std::any_of(m_tracks.begin(), m_tracks.end(),
                       [&](const SpotifyItem& item) { return item.uri == uri; });
}

void SpotifyQueue::observe(const std::optional<QString>& uri, bool playing, PlayerState& player,
                           double position, double duration) {
    // Every sample starts from nothing: a wake-up armed by the one before is re-armed or dropped.
    m_boundary.stop();
    const auto action =
        m_handoff.update(uri, playing, !m_tracks.isEmpty(), m_busy, position, duration);
    if (action.kind == QueueHandoffTiming::Action::advanceNow) {
        advance(player);
        return;
    }
    if (action.kind != QueueHandoffTiming::Action::boundaryIn || !uri || m_tracks.isEmpty())
        return;
    // Resolving takes network time: start it within the last seconds, not at the end.
    prepare(m_tracks.first(), player);
    m_onBoundary = [this, song = *uri, target = QPointer<PlayerState>(&player)] {
        if (target)
            boundaryReached(song, *target);
    };
    m_boundary.start(int(std::ceil(action.seconds * 1000)));
}

void SpotifyQueue::boundaryReached(const QString& uri, PlayerState& player) {
    // Samples and edits may have interleaved since the timer was armed: test everything again.
    if (m_busy || m_tracks.isEmpty() || player.sourceName() != u"Spotify" ||
        player.trackURI() != uri || !player.isPlaying() || player.duration() <= 0)
        return;
    if (player.duration() - player.livePosition() > handoffWithin)
        return; // the next sample arms it again
    m_handoff.attemptedURI = uri;
    advance(player);
}

void SpotifyQueue::forgetHandoff() {
    m_boundary.stop();
    m_handoff = {};
}

bool SpotifyQueue::advance(PlayerState& player) {
    if (m_tracks.isEmpty())
        return false;
    if (m_busy)
        return true; // the next-track button does nothing rather than skip
    const SpotifyItem first = m_tracks.first();
    m_boundary.stop();
    setBusy(true);
    setError(std::nullopt);
    auto preparation = prepare(first, player);
    // Started from the event loop, as its own task: the caller may be in the middle of applying
    // a sample, which the handoff's display switch must not re-enter.
    QMetaObject::invokeMethod(
        this,
        [this, preparation, target = QPointer<PlayerState>(&player)] {
            handOff(preparation, target);
        },
        Qt::QueuedConnection);
    return true;
}

bool SpotifyQueue::playNext() {
    return m_player && advance(*m_player);
}

QCoro::Task<void> SpotifyQueue::handOff(std::shared_ptr<QueuePreparation> preparation,
                                        QPointer<PlayerState> player) {
    QPointer<SpotifyQueue> self(this);
    std::optional<QString> failure;
    try {
        if (!preparation->done)
            co_await qCoro(preparation.get(), &QueuePreparation::finished);
        if (preparation->error)
            std::rethrow_exception(preparation->error);
        if (!preparation->selection || !player)
            throw SpotifyCancellation();
        if (MusicController* controller = player->controller()) {
            // The display goes to the Spotify side at once.
            controller->setSpotifySelected(true);
            controller->apply(controller->lastSpotify(), controller->lastSampledAt());
        }
        // Called before the co_await, not inside it: GCC 12 destroys the temporaries of a
        // co_await expression twice.
        auto playing = player->playSpotify(*preparation->selection);
        co_await std::move(playing);
        if (!self)
            co_return;
        // Removed only once it plays: a failed handoff loses nothing.
        QList<SpotifyItem> rest = m_tracks;
        rest.removeIf([&](const SpotifyItem& item) { return item.uri == preparation->uri; });
        setTracks(rest);
    } catch (const SpotifyError& error) {
        if (!error.isCancellation())
            failure = error.localizedDescription();
    } catch (const std::exception&) {
        failure = QStringLiteral("Spotify didn’t start this song. Try again.");
    }
    if (!self)
        co_return;
    setBusy(false);
    if (m_preparation == preparation)
        m_preparation.reset();
    // The song handed off from stays blocked until it is played afresh.
    m_handoff.previous.reset();
    if (failure)
        setError(failure);
}

std::shared_ptr<QueuePreparation> SpotifyQueue::prepare(const SpotifyItem& item,
                                                        PlayerState& player) {
    const double now = m_clock.now();
    if (m_preparation && m_preparation->uri == item.uri &&
        now - m_preparation->startedAt < preparationLifetime)
        return m_preparation;
    cancelPreparation();
    auto preparation = std::make_shared<QueuePreparation>();
    preparation->uri = item.uri;
    preparation->startedAt = now;
    m_preparation = preparation;
    resolveInto(preparation, m_resolver, item, player.trackURI());
    return preparation;
}

void SpotifyQueue::cancelPreparation() {
    if (!m_preparation)
        return;
    const auto preparation = std::exchange(m_preparation, nullptr);
    preparation->cancelled = true;
    if (!preparation->done) {
        preparation->done = true;
        Q_EMIT preparation->finished();
    }
}

void SpotifyQueue::dropStalePreparation() {
    const std::optional<QString> prepared =
        m_preparation ? std::optional(m_preparation->uri) : std::nullopt;
    const std::optional<QString> first =
        m_tracks.isEmpty() ? std::nullopt : std::optional(m_tracks.first().uri);
    if (prepared != first)
        cancelPreparation();
}

void SpotifyQueue::toggle(const SpotifyItem& item) {
    if (m_busy)
        return;
    if (contains(item.uri)) {
        remove(item);
        return;
    }
    QList<SpotifyItem> tracks = m_tracks;
    tracks.append(item);
    setTracks(tracks);
    dropStalePreparation();
}

void SpotifyQueue::toggleSong(const QVariantMap& row) {
    SpotifyItem item;
    item.id = item.uri = row.value(QStringLiteral("uri")).toString();
    item.name = row.value(QStringLiteral("name")).toString();
    item.subtitle = row.value(QStringLiteral("subtitle")).toString();
    item.kind = QStringLiteral("track");
    item.artistNames = row.value(QStringLiteral("artistNames")).toStringList();
    if (const QString album = row.value(QStringLiteral("albumURI")).toString(); !album.isEmpty())
        item.albumURI = album;
    if (!item.uri.isEmpty())
        toggle(item);
}

void SpotifyQueue::remove(const SpotifyItem& item) {
    if (m_busy)
        return;
    QList<SpotifyItem> tracks = m_tracks;
    tracks.removeIf([&](const SpotifyItem& entry) { return entry.uri == item.uri; });
    setTracks(tracks);
    dropStalePreparation();
}

void SpotifyQueue::move(const SpotifyItem& item, int offset) {
    if (m_busy)
        return;
    const auto found =
        std::find_if(m_tracks.begin(), m_tracks.end(),
                     [&](const SpotifyItem& entry) { return entry.uri == item.uri; });
    if (found == m_tracks.end())
        return;
    const qsizetype from = found - m_tracks.begin();
    const qsizetype to = from + offset;
    if (to < 0 || to >= m_tracks.size())
        return;
    QList<SpotifyItem> tracks = m_tracks;
    tracks.swapItemsAt(from, to);
    setTracks(tracks);
    dropStalePreparation();
}

void SpotifyQueue::removeAt(int index) {
    if (index >= 0 && index < m_tracks.size())
        remove(m_tracks.at(index));
}

void SpotifyQueue::moveAt(int index, int offset) {
    if (index >= 0 && index < m_tracks.size())
        move(m_tracks.at(index), offset);
}

void SpotifyQueue::clear() {
    if (m_busy)
        return;
    setTracks({});
    setError(std::nullopt);
    forgetHandoff();
    dropStalePreparation();
}

void SpotifyQueue::setTracks(QList<SpotifyItem> tracks) {
    if (m_tracks == tracks)
        return;
    m_tracks = std::move(tracks);
    Q_EMIT tracksChanged();
}

void SpotifyQueue::setBusy(bool busy) {
    if (m_busy == busy)
        return;
    m_busy = busy;
    Q_EMIT busyChanged();
}

void SpotifyQueue::setError(std::optional<QString> error) {
    if (m_error == error)
        return;
    m_error = std::move(error);
    Q_EMIT errorChanged();
}

} // namespace MirlPlayer
