#pragma once

#include "library/LibraryFilter.h"
#include "library/LibraryShortcut.h"
#include "library/SpotifyItemListModel.h"
#include "library/SpotifyRoute.h"
#include "playback/SpotifyPlaybackSelection.h"

#include <QCoro/QCoroTask>
#include <QMap>
#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>
#include <functional>

class QQmlEngine;
class QJSEngine;

namespace MirlPlayer {

class Clock;
class Preferences;
class SpotifyLibrary;
class SpotifyMemory;

// The model behind the library view: the tab and the stack of routes the user stands on, the list
// shown, and how fresh it is. A list shows at once from the session cache or the library memory
// and is refreshed behind it only when it is old enough to deserve a request; search waits for a
// pause in typing; likes are optimistic. Also keeps the sidebar's shortcuts and the search history.
class SpotifyBrowser : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString tab READ tab NOTIFY tabChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(QString searchKind READ searchKind WRITE setSearchKind NOTIFY searchKindChanged)
    Q_PROPERTY(QVariantList routes READ routeList NOTIFY routesChanged)
    Q_PROPERTY(QString title READ title NOTIFY routesChanged)
    Q_PROPERTY(SpotifyItemListModel* list READ list CONSTANT)
    Q_PROPERTY(SpotifyItemListModel* recents READ recentsModel CONSTANT)
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)
    Q_PROPERTY(QString error READ errorText NOTIFY errorChanged)
    Q_PROPERTY(bool hasNext READ hasNext NOTIFY nextChanged)
    Q_PROPERTY(int total READ totalCount NOTIFY totalChanged)
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterTextChanged)
    Q_PROPERTY(QString likeError READ likeErrorText NOTIFY likeErrorChanged)
    Q_PROPERTY(QString searchProgress READ searchProgress NOTIFY progressChanged)
    Q_PROPERTY(QVariantList shortcuts READ shortcutList NOTIFY shortcutsChanged)
    Q_PROPERTY(bool refreshing READ refreshing NOTIFY refreshingChanged)
    Q_PROPERTY(bool isSearchHome READ isSearchHome NOTIFY routesChanged)

public:
    using Route = SpotifyRoute;
    using Sleeper = std::function<QCoro::Task<void>(double seconds)>;

    struct CacheEntry {
        QList<SpotifyItem> items;
        std::optional<QString> next;
        std::optional<qint64> total;
        double at = 0; // wall-clock seconds
    };

    static constexpr double freshFor = 600.0;   // a cached list younger than this asks nothing
    static constexpr double pullSpacing = 4.0;  // a second pull within this is ignored
    static constexpr double typingPause = 0.25; // search waits for this pause in typing
    static constexpr int selectionWindow = 50;

    SpotifyBrowser(SpotifyLibrary& library, SpotifyMemory& memory, Preferences& defaults,
                   Clock& clock, QObject* parent = nullptr);
    ~SpotifyBrowser() override;

    static SpotifyBrowser& shared();
    static SpotifyBrowser* create(QQmlEngine*, QJSEngine*);
    void setSleeper(Sleeper sleeper) { m_sleeper = std::move(sleeper); }

    // --- published state ---
    QString tab() const { return m_tab; }
    QString query() const { return m_query; }
    QString searchKind() const { return m_searchKind; }
    const QList<Route>& routes() const { return m_routes; }
    QVariantList routeList() const;
    QString title() const { return currentRoute().title; }
    const QList<SpotifyItem>& items() const { return m_items; }
    SpotifyItemListModel* list() { return &m_list; }
    SpotifyItemListModel* recentsModel() { return &m_recentsModel; }
    bool loading() const { return m_loading; }
    std::optional<QString> error() const { return m_error; }
    QString errorText() const { return m_error.value_or(QString()); }
    std::optional<QString> next() const { return m_next; }
    bool hasNext() const { return m_next.has_value(); }
    std::optional<qint64> total() const { return m_total; }
    int totalCount() const { return int(m_total.value_or(-1)); }
    QString filter() const { return m_filter; }
    const QMap<QString, bool>& liked() const { return m_liked; }
    const QList<SpotifyItem>& recents() const { return m_recents; }
    QString likeErrorText() const { return m_likeError.value_or(QString()); }
    Q_INVOKABLE void dismissLikeError() { setLikeError(std::nullopt); }
    const QList<LibraryShortcut>& shortcuts() const { return m_shortcuts; }
    QVariantList shortcutList() const;
    bool refreshing() const { return m_refreshing; }
    const QMap<QString, QString>& scrollPositions() const { return m_scrollPositions; }
    const QMap<QString, CacheEntry>& cache() const { return m_cache; }

    // --- navigation ---
    Route currentRoute() const;
    static std::optional<Route> routeForItem(const SpotifyItem& item);
    bool isFiltering() const;
    // "Searching…", or how far a filter that pages through a large list has come.
    QString searchProgress() const;
    bool isSearchRoot() const;
    bool isSearchHome() const;
    void setQuery(const QString& text);
    void setSearchKind(const QString& kind);
    void setFilter(const QString& text);

    void load(bool more = false, bool debounce = false, bool force = false);
    Q_INVOKABLE void loadMore() { load(true); }
    Q_INVOKABLE void retry() { load(!m_items.isEmpty()); }
    Q_INVOKABLE void selectTab(const QString& name);
    void openItem(const SpotifyItem& item);
    Q_INVOKABLE void openRow(int row);
    Q_INVOKABLE void goBack();
    Q_INVOKABLE void pullRefresh();
    QList<SpotifyItem> visibleItems();
    // The same without copying records: a list and, under a filter, the rows of it shown.
    std::pair<QList<SpotifyItem>, std::optional<QList<int>>> visibleRows();
    void filterChanged();
    bool useMemorySaved();
    QCoro::Task<void> prepare();
    Q_INVOKABLE void appear();
    Q_INVOKABLE void disappear();
    Q_INVOKABLE void rememberPosition(const QString& key, const QString& value);
    Q_INVOKABLE QString scrollPosition(const QString& key) const {
        return m_scrollPositions.value(key);
    }

    // --- likes ---
    bool isLiked(const SpotifyItem& item);
    Q_INVOKABLE bool isLikedURI(const QString& uri);
    // Liked or not, or none while neither the answers nor the memory know yet.
    std::optional<bool> likeState(const QString& uri);
    void setLiked(const SpotifyItem& item, bool wanted);
    Q_INVOKABLE void setLikedRow(int row, bool wanted);
    void queryLiked(const QList<SpotifyItem>& items, bool assumeLiked);
    void openAlbumOfTrack(const SpotifyItem& track);
    Q_INVOKABLE void openAlbumOfRow(int row);

    // --- playing ---
    // The request for a song of the list: its context is the open playlist or album, or the
    // account's Liked Songs; `following` holds up to 50 songs after it in the list.
    std::optional<SpotifyPlaybackSelection> selectionFor(const SpotifyItem& item) const;

    // --- shortcuts and history ---
    void moveShortcut(const LibraryShortcut& shortcut, const std::optional<QString>& beforeID);
    Q_INVOKABLE void pinRow(int row, const QString& beforeID = {});
    Q_INVOKABLE void moveShortcutBefore(const QString& id, const QString& beforeID);
    void removeShortcut(const LibraryShortcut& shortcut);
    Q_INVOKABLE void removeShortcutID(const QString& id);
    void recordRecent(const SpotifyItem& item);
    Q_INVOKABLE void clearRecents();
    // The cross of a recent search, by its row on the search page.
    Q_INVOKABLE void removeRecentRow(int row);

Q_SIGNALS:
    void tabChanged();
    void queryChanged();
    void searchKindChanged();
    void routesChanged();
    void loadingChanged();
    void errorChanged();
    void nextChanged();
    void totalChanged();
    void progressChanged();
    void filterTextChanged();
    void likedChanged();
    void likeErrorChanged();
    void shortcutsChanged();
    void refreshingChanged();

private:
    QCoro::Task<void> fetchNext(QString address, Route route, bool more, bool debounce, int id);
    QCoro::Task<void> revalidate(Route route, int id, bool manual);
    QCoro::Task<void> runQueryLiked(QStringList uris);
    QCoro::Task<void> runSetLiked(SpotifyItem item, bool wanted, std::optional<bool> previous);
    QCoro::Task<void> runOpenAlbum(SpotifyItem track);
    QCoro::Task<void> confirmSaved();
    SpotifyItem applyAlbumContext(const SpotifyItem& item, const Route& route) const;
    void storeList(const Route& route, const CacheEntry& entry);
    void resetModel();
    void newRequest();
    void publishVisible();
    void saveShortcuts();
    void saveRecents();
    bool connected() const;
    double wallNow() const;

    void setItems(const QList<SpotifyItem>& items);
    void setLoading(bool value);
    void setError(std::optional<QString> value);
    void setNext(std::optional<QString> value);
    void setTotal(std::optional<qint64> value);
    void setLikeError(std::optional<QString> value);
    void setRefreshing(bool value);
    void setRoutes(const QList<Route>& routes);
    void setTab(const QString& tab);
    void setFilterText(const QString& text);

    SpotifyLibrary& m_library;
    SpotifyMemory& m_memory;
    Preferences& m_defaults;
    Clock& m_clock;
    Sleeper m_sleeper;

    QString m_tab = QStringLiteral("Playlists");
    QString m_query;
    QString m_searchKind = QStringLiteral("track");
    QList<Route> m_routes;
    QList<SpotifyItem> m_items;
    bool m_loading = false;
    std::optional<QString> m_error;
    std::optional<QString> m_next;
    std::optional<qint64> m_total;
    QString m_filter;
    QMap<QString, bool> m_liked;
    QList<SpotifyItem> m_recents;
    std::optional<QString> m_likeError;
    QList<LibraryShortcut> m_shortcuts;
    QMap<QString, QString> m_scrollPositions;
    bool m_restored = false;
    int m_memoryRevision = -1;
    int m_requestID = 0;
    QMap<QString, CacheEntry> m_cache;
    struct VisibleMemo {
        QString query;
        qsizetype count = 0;
        QString first;
        QList<int> result; // rows of `items`
    };
    std::optional<VisibleMemo> m_visibleMemo;
    LibraryFilter m_matcher;
    bool m_confirmingSaved = false;
    bool m_refreshing = false;
    QMap<QString, double> m_lastPull;

    SpotifyItemListModel m_list;
    SpotifyItemListModel m_recentsModel;
};

} // namespace MirlPlayer
