#pragma once

#include "library/RowClickTiming.h"
#include "panel/logic/PointerGuard.h"
#include "playback/PlayerState.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QTimer>
#include <QWindow>
#include <QtQml/qqmlregistration.h>
#include <functional>

namespace MirlPlayer {

class Clock;
class SpotifyBrowser;
class SpotifyItemListModel;
class SpotifyMemory;
class SpotifyLibrary;
struct SpotifyItem;
struct SpotifyPlaybackSelection;

// The library view's own rules, for the view to bind: a single click on a song plays it and a
// double click likes it; pins are dragged to reorder and dragged out to remove; resting on the
// "Player" control returns to the player; the playback banner. Everything else lives in the
// browser.
class LibraryViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(MirlPlayer::PlayerState* player READ player WRITE setPlayer NOTIFY playerChanged)
    Q_PROPERTY(QString playbackError READ playbackError NOTIFY playbackErrorChanged)
    Q_PROPERTY(bool showingQueue READ showingQueue WRITE setShowingQueue NOTIFY showingQueueChanged)
    Q_PROPERTY(QString dragged READ dragged NOTIFY dragChanged)
    Q_PROPERTY(QString dropTarget READ dropTarget NOTIFY dragChanged)
    Q_PROPERTY(bool dropRemoves READ dropRemoves NOTIFY dragChanged)
    Q_PROPERTY(QPointF pointer READ pointer NOTIFY pointerChanged)
    Q_PROPERTY(QString pendingClick READ pendingClick NOTIFY pendingClickChanged)
    Q_PROPERTY(bool connected READ connected NOTIFY accountChanged)
    Q_PROPERTY(bool connecting READ connecting NOTIFY accountChanged)
    Q_PROPERTY(bool justConnected READ justConnected NOTIFY accountChanged)
    Q_PROPERTY(QString banner READ banner NOTIFY bannerChanged)
    Q_PROPERTY(QString bannerAction READ bannerAction NOTIFY bannerChanged)
    Q_PROPERTY(QWindow* window READ window WRITE setWindow NOTIFY windowChanged)

public:
    explicit LibraryViewModel(QObject* parent = nullptr);
    LibraryViewModel(SpotifyLibrary& library, SpotifyBrowser& browser, SpotifyMemory& memory,
                     Clock& clock, PointerGuard& guard, QObject* parent = nullptr);
    ~LibraryViewModel() override;

    PlayerState* player() const { return m_player; }
    void setPlayer(PlayerState* player);
    QString playbackError() const { return m_playbackError; }
    bool showingQueue() const { return m_showingQueue; }
    void setShowingQueue(bool showing);
    QString dragged() const { return m_dragged; }
    QString dropTarget() const { return m_dropTarget.value_or(QString()); }
    bool dropRemoves() const { return !m_dragged.isEmpty() && !m_dropTarget; }
    QPointF pointer() const { return m_pointer; }
    QString pendingClick() const { return m_clicks.pendingClick.value_or(QString()); }
    bool connected() const;
    bool connecting() const;
    // Signed in from the library's own empty state, until the user goes back to the library.
    bool justConnected() const { return m_justConnected; }
    // The banner over the list: a failed play, else a failed like; its one button is "Dismiss",
    // "Finish setup" when the setup is incomplete, "Reconnect" when liking lacks the permission.
    QString banner() const;
    QString bannerAction() const;
    // The window the view stands in. Esc pressed there returns to the player, unless a text
    // field has the keyboard. It is heard on the window itself, since the panel gives the
    // keyboard back once a field is done, and no item then has the focus to hear it.
    QWindow* window() const { return m_window; }
    void setWindow(QWindow* window);

    // A click on a song row of `model`. `context` is the list it plays in: empty for the browser's
    // own list, "liked" for an artist's liked songs (played in the account's Liked Songs).
    Q_INVOKABLE void rowClicked(MirlPlayer::SpotifyItemListModel* model, int row,
                                const QString& context = {});
    // The heart of a row: likes or unlikes the song.
    Q_INVOKABLE void toggleLike(MirlPlayer::SpotifyItemListModel* model, int row);
    // A row's context menu: the album of the song, or one of its artists.
    Q_INVOKABLE void openRow(MirlPlayer::SpotifyItemListModel* model, int row);
    Q_INVOKABLE void openAlbumOf(MirlPlayer::SpotifyItemListModel* model, int row);
    Q_INVOKABLE void openArtistOf(MirlPlayer::SpotifyItemListModel* model, int row, int which);
    // Signing in to Spotify from the library's empty state, and calling it off.
    Q_INVOKABLE void beginSetup();
    Q_INVOKABLE void cancelSetup();
    Q_INVOKABLE void backToLibrary();
    Q_INVOKABLE void bannerActionClicked();

    // How the settings window is opened on a page; the application sets it.
    static inline std::function<void(const QString& page)> openSettings;

    // Pins: the sidebar's frame and each pin's row frame, in the view's coordinates.
    Q_INVOKABLE void setSidebarFrame(const QRectF& frame) { m_sidebar = frame; }
    Q_INVOKABLE void setRowFrame(const QString& id, const QRectF& frame) { m_frames[id] = frame; }
    Q_INVOKABLE void dragMoved(const QString& id, const QPointF& pointer);
    Q_INVOKABLE void dragReleased(const QPointF& pointer);

    // The "Player" control of the bar: where it stands on screen when the bar appears, and the
    // pointer resting on it.
    Q_INVOKABLE void barAppeared(const QRectF& controlScreenRect);
    Q_INVOKABLE void playerHover(const QPointF& screenPointer);
    Q_INVOKABLE void playerHoverEnded();
    // The view goes away: waiting clicks, the hover and a drag are forgotten.
    Q_INVOKABLE void disappear();

    // Where the pointer and the desktop's double-click interval are read; tests set them.
    std::function<QPointF()> screenPointer;
    std::function<double()> doubleClickInterval;
    // How a chosen song is played; the player's own play request unless set.
    std::function<QCoro::Task<void>(SpotifyPlaybackSelection)> play;

Q_SIGNALS:
    void playerChanged();
    void playbackErrorChanged();
    void showingQueueChanged();
    void dragChanged();
    void pointerChanged();
    void pendingClickChanged();
    void accountChanged();
    void bannerChanged();
    void windowChanged();
    // The user asked to go back to the player.
    void closeRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void playPending();
    void playItem(const SpotifyItem& item, bool fromBrowser, const QString& context);
    QCoro::Task<void> runPlay(SpotifyPlaybackSelection selection);
    QStringList movablePins() const;
    void setPlaybackError(const QString& text);
    void watchAccount();

    SpotifyLibrary& m_library;
    SpotifyBrowser& m_browser;
    SpotifyMemory& m_memory;
    Clock& m_clock;
    PointerGuard& m_guard;
    QPointer<PlayerState> m_player;
    QString m_playbackError;
    bool m_showingQueue = false;
    bool m_settingUp = false;
    bool m_justConnected = false;

    RowClickTiming m_clicks;
    QTimer m_pendingPlay;
    QPointer<SpotifyItemListModel> m_pendingModel;
    int m_pendingRow = -1;
    QString m_pendingContext;

    QString m_dragged;
    std::optional<QString> m_dropTarget;
    QPointF m_pointer;
    QRectF m_sidebar;
    QHash<QString, QRectF> m_frames;

    HoverIntent m_playerIntent;
    QTimer m_returnToPlayer;
    QPointer<QWindow> m_window;
};

} // namespace MirlPlayer
