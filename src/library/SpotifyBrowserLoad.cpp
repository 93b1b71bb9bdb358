// The browser's lists: the choice between a cached list and a fresh one, pages, revalidation.
#include "core/Clock.h"
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"
#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLibrary.h"

#include <QPointer>
#include <QSet>

namespace MirlPlayer {

namespace {

SpotifyPage pageOf(QJsonObject object, const SpotifyRoute& route) {
    if (route.wrapper && object.value(*route.wrapper).isObject())
        object = object.value(*route.wrapper).toObject();
    return pageFromJSON(object);
}

} // namespace

void SpotifyBrowser::load(bool more, bool debounce, bool force) {
    if (more && (m_loading || !m_next))
        return;
    if (isFiltering() && currentRoute().path.startsWith(u"me/tracks") && useMemorySaved())
        return publishVisible();
    newRequest();
    const Route route = currentRoute();
    if (!more && !force) {
        auto hit = m_cache.constFind(route.path);
        if (hit == m_cache.cend()) {
            const auto& pages = m_memory.data().pages;
            if (auto page = pages.constFind(route.path); page != pages.cend())
                hit = m_cache.insert(route.path, {page->items, page->next, page->total,
                                                  page->fetched.value_or(Clock::distantPast)});
        }
        if (hit != m_cache.cend()) {
            const CacheEntry entry = *hit;
            setItems(entry.items);
            setNext(entry.next);
            setTotal(entry.total);
            setError(std::nullopt);
            setLoading(false);
            if (isFiltering() && m_next)
                return load(true);
            if (wallNow() - entry.at > freshFor)
                revalidate(route, m_requestID, false);
            return;
        }
    }
    std::optional<QString> address;
    if (!more) {
        setItems({});
        setNext(std::nullopt);
        setTotal(std::nullopt);
        address = route.path;
    } else {
        address = m_next;
    }
    setError(std::nullopt);
    if (connected() && address && !isSearchHome()) {
        setLoading(true);
        fetchNext(*address, route, more, debounce, m_requestID);
        return;
    }
    setLoading(false);
    if (isSearchHome())
        queryLiked(m_recents, false);
}

QCoro::Task<void> SpotifyBrowser::fetchNext(QString address, Route route, bool more, bool debounce,
                                            int id) {
    QPointer<SpotifyBrowser> self(this);
    try {
        if (debounce) {
            co_await m_sleeper(typingPause);
            if (!self || id != m_requestID)
                co_return;
        }
        const bool bulk = more && isFiltering();
        while (true) {
            const QList<SpotifyItem> existing = m_items;
            const QJsonObject object = co_await m_library.getJSON(address, bulk);
            if (!self || id != m_requestID)
                co_return;
            const SpotifyPage page = pageOf(object, route);
            QSet<QString> seen;
            for (const SpotifyItem& item : existing)
                seen.insert(item.id);
            QList<SpotifyItem> fresh;
            for (const SpotifyItem& item : page.items) {
                if (seen.contains(item.id))
                    continue;
                seen.insert(item.id);
                fresh.append(applyAlbumContext(item, route));
            }
            setItems(existing + fresh);
            setNext(page.next);
            if (page.total)
                setTotal(page.total);
            storeList(route, {m_items, m_next, m_total, wallNow()});
            queryLiked(fresh, route.path.startsWith(u"me/tracks"));
            // A filter pulls the whole list in behind it, in larger pages.
            if (!isFiltering() || !m_next)
                break;
            address =
                QString(*m_next).replace(QStringLiteral("limit=30"), QStringLiteral("limit=50"));
        }
        setLoading(false);
    } catch (const SpotifyError& e) {
        if (self && id == m_requestID && !e.isCancellation()) {
            setError(e.localizedDescription());
            setLoading(false);
        }
    }
}

void SpotifyBrowser::storeList(const Route& route, const CacheEntry& entry) {
    m_cache.insert(route.path, entry);
    // Search answers never reach the disk.
    if (!route.path.startsWith(u"search?"))
        m_memory.storePage(route.path, entry.items, entry.next, entry.total, entry.at);
}

QCoro::Task<void> SpotifyBrowser::revalidate(Route route, int id, bool manual) {
    if (!connected())
        co_return;
    if (manual)
        setRefreshing(true);
    QPointer<SpotifyBrowser> self(this);
    try {
        const QJsonObject object = co_await m_library.getJSON(route.path, false);
        if (!self)
            co_return;
        if (id == m_requestID && currentRoute() == route) {
            SpotifyPage page = pageOf(object, route);
            for (SpotifyItem& item : page.items)
                item = applyAlbumContext(item, route);
            const auto cached = m_cache.constFind(route.path);
            bool unchanged = false;
            if (cached != m_cache.cend()) {
                const auto total = page.total ? page.total : cached->total;
                unchanged = total == cached->total && cached->items.size() >= page.items.size();
                for (qsizetype i = 0; unchanged && i < page.items.size(); ++i)
                    unchanged = cached->items.at(i).id == page.items.at(i).id;
            }
            if (unchanged) {
                // A long list that was scrolled stays whole; it is only younger now.
                CacheEntry entry = *cached;
                entry.at = wallNow();
                storeList(route, entry);
            } else {
                setError(std::nullopt);
                setItems(page.items);
                setNext(page.next);
                setTotal(page.total);
                storeList(route, {page.items, page.next, page.total, wallNow()});
                queryLiked(page.items, route.path.startsWith(u"me/tracks"));
            }
        }
    } catch (const SpotifyError& e) {
        if (self && manual && id == m_requestID && currentRoute() == route && !e.isCancellation())
            setError(e.localizedDescription());
    }
    if (self && manual)
        setRefreshing(false);
}

void SpotifyBrowser::pullRefresh() {
    if (m_refreshing || m_loading || isSearchHome())
        return;
    const Route route = currentRoute();
    const auto last = m_lastPull.constFind(route.path);
    if (last != m_lastPull.cend() && m_clock.now() - *last <= pullSpacing)
        return;
    m_lastPull.insert(route.path, m_clock.now());
    revalidate(route, m_requestID, true);
}

SpotifyItem SpotifyBrowser::applyAlbumContext(const SpotifyItem& item, const Route& route) const {
    if (item.image || !route.image)
        return item;
    SpotifyItem copy = item;
    copy.image = route.image;
    copy.largeImage = route.image;
    if (route.kind == u"album") {
        if (!copy.albumURI)
            copy.albumURI = route.uri;
        if (!copy.albumName)
            copy.albumName = route.title;
    }
    return copy;
}

// --- published fields: compared before they are written ---

void SpotifyBrowser::setItems(const QList<SpotifyItem>& items) {
    m_items = items;
    publishVisible();
    Q_EMIT progressChanged();
}

void SpotifyBrowser::setLoading(bool value) {
    if (m_loading != value) {
        m_loading = value;
        Q_EMIT loadingChanged();
    }
}

void SpotifyBrowser::setError(std::optional<QString> value) {
    if (m_error != value) {
        m_error = std::move(value);
        Q_EMIT errorChanged();
    }
}

void SpotifyBrowser::setNext(std::optional<QString> value) {
    if (m_next != value) {
        m_next = std::move(value);
        Q_EMIT nextChanged();
    }
}

void SpotifyBrowser::setTotal(std::optional<qint64> value) {
    if (m_total != value) {
        m_total = value;
        Q_EMIT totalChanged();
        Q_EMIT progressChanged();
    }
}

void SpotifyBrowser::setLikeError(std::optional<QString> value) {
    if (m_likeError != value) {
        m_likeError = std::move(value);
        Q_EMIT likeErrorChanged();
    }
}

void SpotifyBrowser::setRefreshing(bool value) {
    if (m_refreshing != value) {
        m_refreshing = value;
        Q_EMIT refreshingChanged();
    }
}

void SpotifyBrowser::setRoutes(const QList<Route>& routes) {
    if (m_routes != routes) {
        m_routes = routes;
        Q_EMIT routesChanged();
    }
}

void SpotifyBrowser::setTab(const QString& tab) {
    if (m_tab != tab) {
        m_tab = tab;
        Q_EMIT tabChanged();
        Q_EMIT routesChanged();
    }
}

void SpotifyBrowser::setFilterText(const QString& text) {
    if (m_filter != text) {
        m_filter = text;
        Q_EMIT filterTextChanged();
        Q_EMIT progressChanged();
    }
}

} // namespace MirlPlayer
