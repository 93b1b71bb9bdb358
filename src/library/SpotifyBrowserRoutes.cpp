// The browser's navigation: routes, tabs, the stack, the search text.
#include "library/SpotifyBrowser.h"

#include <QUrlQuery>

namespace MirlPlayer {

namespace {

QString capitalized(const QString& word) {
    return word.isEmpty() ? word : word.left(1).toUpper() + word.mid(1);
}

} // namespace

std::optional<SpotifyRoute> SpotifyBrowser::routeForItem(const SpotifyItem& item) {
    const QString id = bareID(item);
    Route route;
    if (item.kind == u"playlist")
        route.path = QStringLiteral("playlists/") + id + QStringLiteral("/items?limit=30");
    else if (item.kind == u"artist")
        route.path = QStringLiteral("artists/") + id +
                     QStringLiteral("/albums?limit=10&include_groups=album,single");
    else if (item.kind == u"album")
        route.path = QStringLiteral("albums/") + id + QStringLiteral("/tracks?limit=30");
    else
        return std::nullopt;
    route.title = item.name;
    route.uri = item.uri;
    route.kind = item.kind;
    if (item.kind == u"album")
        route.image = item.image ? item.image : item.largeImage;
    return route;
}

SpotifyRoute SpotifyBrowser::currentRoute() const {
    if (!m_routes.isEmpty())
        return m_routes.last();
    for (const LibraryShortcut& s : m_shortcuts) {
        if (s.name != m_tab || s.kind == u"builtin")
            continue;
        SpotifyItem item;
        item.name = s.name;
        item.subtitle = capitalized(s.kind);
        item.kind = s.kind;
        item.image = s.image;
        item.uri = item.id = s.id;
        if (auto route = routeForItem(item))
            return *route;
        break;
    }
    Route route;
    if (m_tab == u"Liked Songs") {
        route.title = m_tab;
        route.path = QStringLiteral("me/tracks?limit=30");
        return route;
    }
    if (m_tab == u"Search") {
        QUrlQuery items;
        items.addQueryItem(QStringLiteral("q"), m_query);
        items.addQueryItem(QStringLiteral("type"), m_searchKind);
        items.addQueryItem(QStringLiteral("limit"), QStringLiteral("10"));
        route.title = QStringLiteral("Search");
        route.path = QStringLiteral("search?") + items.toString(QUrl::FullyEncoded);
        route.wrapper = m_searchKind + u's';
        return route;
    }
    route.title = QStringLiteral("Your playlists");
    route.path = QStringLiteral("me/playlists?limit=30");
    return route;
}

bool SpotifyBrowser::isFiltering() const {
    return !m_filter.trimmed().isEmpty();
}

QString SpotifyBrowser::searchProgress() const {
    // Only a filter pages through the rest of a list; a search asks once.
    if (!isFiltering() || !m_total || *m_total <= m_items.size())
        return QStringLiteral("Searching…");
    return QStringLiteral("Searching %1 of %2…").arg(m_items.size()).arg(*m_total);
}

bool SpotifyBrowser::isSearchRoot() const {
    return m_tab == u"Search" && m_routes.isEmpty();
}

bool SpotifyBrowser::isSearchHome() const {
    return isSearchRoot() && m_query.trimmed().isEmpty();
}

void SpotifyBrowser::selectTab(const QString& name) {
    setTab(name);
    setRoutes({});
    setFilterText({});
    load();
}

void SpotifyBrowser::openItem(const SpotifyItem& item) {
    auto route = routeForItem(item);
    if (!route)
        return;
    QList<Route> routes = m_routes;
    routes.append(*route);
    setRoutes(routes);
    setFilterText({});
    load();
}

void SpotifyBrowser::openRow(int row) {
    if (row < 0 || row >= m_list.count())
        return;
    const SpotifyItem item = m_list.at(row);
    if (isSearchRoot())
        recordRecent(item);
    openItem(item);
}

void SpotifyBrowser::goBack() {
    QList<Route> routes = m_routes;
    if (!routes.isEmpty())
        routes.removeLast();
    setRoutes(routes);
    setFilterText({});
    load();
}

void SpotifyBrowser::setQuery(const QString& text) {
    if (m_query == text)
        return;
    m_query = text;
    Q_EMIT queryChanged();
    Q_EMIT routesChanged(); // the search route and `isSearchHome` follow the text
    if (isSearchRoot())
        load(false, true);
}

void SpotifyBrowser::setSearchKind(const QString& kind) {
    if (m_searchKind == kind)
        return;
    m_searchKind = kind;
    Q_EMIT searchKindChanged();
    if (isSearchRoot())
        load();
}

void SpotifyBrowser::setFilter(const QString& text) {
    if (m_filter == text)
        return;
    setFilterText(text);
    filterChanged();
}

} // namespace MirlPlayer
