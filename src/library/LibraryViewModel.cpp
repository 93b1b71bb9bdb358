#include "library/LibraryViewModel.h"

#include "library/PinDrop.h"
#include "library/SpotifyBrowser.h"
#include "library/SpotifyItemListModel.h"
#include "library/SpotifyMemory.h"
#include "playback/PlayerState.h"
#include "playback/SpotifyQueue.h"
#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLibrary.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStyleHints>

namespace MirlPlayer {

namespace {

constexpr int returnToPlayerMs = 200;

} // namespace

LibraryViewModel::LibraryViewModel(QObject* parent)
    : LibraryViewModel(SpotifyLibrary::shared(), SpotifyBrowser::shared(), SpotifyMemory::shared(),
                       Clock::system(), PointerGuard::shared(), parent) {}

LibraryViewModel::LibraryViewModel(SpotifyLibrary& library, SpotifyBrowser& browser,
                                   SpotifyMemory& memory, Clock& clock, PointerGuard& guard,
                                   QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_browser(browser)
    , m_memory(memory)
    , m_clock(clock)
    , m_guard(guard) {
    screenPointer = [] { return QPointF(QCursor::pos()); };
    doubleClickInterval = [] {
        return QGuiApplication::styleHints()->mouseDoubleClickInterval() / 1000.0;
    };
    m_pendingPlay.setSingleShot(true);
    connect(&m_pendingPlay, &QTimer::timeout, this, &LibraryViewModel::playPending);
    m_returnToPlayer.setSingleShot(true);
    m_returnToPlayer.setInterval(returnToPlayerMs);
    connect(&m_returnToPlayer, &QTimer::timeout, this, [this] {
        if (m_guard.passes(screenPointer()))
            Q_EMIT closeRequested();
    });
    watchAccount();
}

void LibraryViewModel::toggleLike(SpotifyItemListModel* model, int row) {
    if (!model || row < 0 || row >= model->count())
        return;
    const SpotifyItem item = model->at(row);
    m_browser.setLiked(item, !m_browser.isLiked(item));
}

LibraryViewModel::~LibraryViewModel() = default;

void LibraryViewModel::setPlayer(PlayerState* player) {
    if (m_player == player)
        return;
    m_player = player;
    Q_EMIT playerChanged();
}

void LibraryViewModel::setShowingQueue(bool showing) {
    if (m_showingQueue == showing)
        return;
    m_showingQueue = showing;
    Q_EMIT showingQueueChanged();
}

void LibraryViewModel::setPlaybackError(const QString& text) {
    if (m_playbackError == text)
        return;
    m_playbackError = text;
    Q_EMIT playbackErrorChanged();
    Q_EMIT bannerChanged();
}

// --- single click plays, double click likes ---

void LibraryViewModel::rowClicked(SpotifyItemListModel* model, int row, const QString& context) {
    if (!model || row < 0 || row >= model->count())
        return;
    const SpotifyItem& item = model->at(row);
    switch (m_clicks.click(item.id, m_clock.now())) {
    case RowClickTiming::Outcome::ignored:
        return;
    case RowClickTiming::Outcome::doubleClick:
        m_pendingPlay.stop();
        m_pendingModel = nullptr;
        // A double click never removes a like, and the song does not start.
        if (!m_browser.isLiked(item))
            m_browser.setLiked(item, true);
        break;
    case RowClickTiming::Outcome::waiting:
        m_pendingModel = model;
        m_pendingRow = row;
        m_pendingContext = context;
        m_pendingPlay.start(int(RowClickTiming::waitFor(doubleClickInterval()) * 1000));
        break;
    }
    Q_EMIT pendingClickChanged();
}

void LibraryViewModel::playPending() {
    const std::optional<QString> id = m_clicks.expire();
    Q_EMIT pendingClickChanged();
    const QPointer<SpotifyItemListModel> model = std::exchange(m_pendingModel, nullptr);
    // The list may have changed under the wait: the row must still hold the clicked song.
    if (!id || !model || m_pendingRow >= model->count() || model->at(m_pendingRow).id != *id)
        return;
    playItem(model->at(m_pendingRow), model == m_browser.list(), m_pendingContext);
}

void LibraryViewModel::playItem(const SpotifyItem& item, bool fromBrowser, const QString& context) {
    setPlaybackError({});
    // A song of the browser's list plays in its playlist, album or Liked Songs; an artist's liked
    // song in Liked Songs; any other on its own.
    std::optional<SpotifyPlaybackSelection> selection;
    if (fromBrowser)
        selection = m_browser.selectionFor(item);
    try {
        std::optional<QString> likedSongs; // the account's collection
        if (context == u"liked" && !m_memory.data().owner.isEmpty())
            likedSongs = m_memory.data().owner;
        if (!selection)
            selection = SpotifyQueue::selectionOf(item, likedSongs);
    } catch (const SpotifyFailure& failure) {
        setPlaybackError(failure.message);
        return;
    }
    runPlay(*selection);
}

QCoro::Task<void> LibraryViewModel::runPlay(SpotifyPlaybackSelection selection) {
    QPointer<LibraryViewModel> self(this);
    try {
        if (play) {
            auto task = play(selection);
            co_await std::move(task);
        } else if (m_player) {
            auto task = m_player->playSpotify(selection);
            co_await std::move(task);
        }
    } catch (const SpotifyCancellation&) {
    } catch (const SpotifyFailure& failure) {
        if (self)
            setPlaybackError(failure.message);
    }
}

void LibraryViewModel::openRow(SpotifyItemListModel* model, int row) {
    if (model && row >= 0 && row < model->count())
        m_browser.openItem(model->at(row));
}

void LibraryViewModel::openAlbumOf(SpotifyItemListModel* model, int row) {
    if (model && row >= 0 && row < model->count())
        m_browser.openAlbumOfTrack(model->at(row));
}

void LibraryViewModel::openArtistOf(SpotifyItemListModel* model, int row, int which) {
    if (!model || row < 0 || row >= model->count())
        return;
    const SpotifyItem& song = model->at(row);
    if (which < 0 || which >= song.artistIDs.size())
        return;
    SpotifyItem artist;
    artist.id = song.artistIDs.at(which);
    artist.uri = QStringLiteral("spotify:artist:") + artist.id;
    artist.kind = QStringLiteral("artist");
    artist.name = song.artistNames.value(which);
    m_browser.openItem(artist);
}

// --- pins ---

QStringList LibraryViewModel::movablePins() const {
    QStringList ids;
    for (const LibraryShortcut& s : m_browser.shortcuts())
        if (s.kind != u"builtin")
            ids.append(s.id);
    return ids;
}

void LibraryViewModel::dragMoved(const QString& id, const QPointF& pointer) {
    const bool started = m_dragged.isEmpty();
    m_dragged = id;
    m_pointer = pointer;
    Q_EMIT pointerChanged();
    const auto target = pinDropTarget(pointer, m_sidebar, movablePins(), id, m_frames);
    if (started || target != m_dropTarget) {
        m_dropTarget = target;
        Q_EMIT dragChanged();
    }
}

void LibraryViewModel::dragReleased(const QPointF& pointer) {
    if (m_dragged.isEmpty())
        return;
    const auto target = pinDropTarget(pointer, m_sidebar, movablePins(), m_dragged, m_frames);
    const QString id = std::exchange(m_dragged, QString());
    m_dropTarget.reset();
    if (!target)
        m_browser.removeShortcutID(id);
    else
        m_browser.moveShortcutBefore(id, *target == pinEndMarker ? QString() : *target);
    Q_EMIT dragChanged();
}

// --- back to the player ---

void LibraryViewModel::barAppeared(const QRectF& controlScreenRect) {
    const QPointF at = screenPointer();
    const bool inside = controlScreenRect.width() > 0 && controlScreenRect.contains(at);
    m_playerIntent = HoverIntent::appear(inside, m_clock.now(), at);
}

void LibraryViewModel::playerHover(const QPointF& screenPointer) {
    if (!m_playerIntent.hoverMayStart(m_guard, m_clock.now(), screenPointer, false,
                                      m_returnToPlayer.isActive()))
        return;
    m_returnToPlayer.start();
}

void LibraryViewModel::playerHoverEnded() {
    m_returnToPlayer.stop();
    m_playerIntent.waitingForExit = false;
}

void LibraryViewModel::setWindow(QWindow* window) {
    if (m_window == window)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    if (window)
        window->installEventFilter(this);
    Q_EMIT windowChanged();
}

bool LibraryViewModel::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_window || event->type() != QEvent::KeyPress)
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_Escape || key->modifiers() != Qt::NoModifier)
        return false;
    // A field that takes typed text answers Esc itself: it empties first, then lets go.
    const auto* quick = qobject_cast<QQuickWindow*>(m_window.data());
    const QQuickItem* focused = quick ? quick->activeFocusItem() : nullptr;
    if (focused && focused->flags().testFlag(QQuickItem::ItemAcceptsInputMethod))
        return false;
    Q_EMIT closeRequested();
    return true;
}

void LibraryViewModel::disappear() {
    m_pendingPlay.stop();
    m_clicks.cancel();
    m_pendingModel = nullptr;
    m_returnToPlayer.stop();
    if (!m_dragged.isEmpty()) {
        m_dragged.clear();
        m_dropTarget.reset();
        Q_EMIT dragChanged();
    }
    Q_EMIT pendingClickChanged();
}

} // namespace MirlPlayer
