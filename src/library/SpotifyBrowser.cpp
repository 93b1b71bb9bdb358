#include "library/SpotifyBrowser.h"

#include "core/Clock.h"
#include "core/Preferences.h"
#include "library/SpotifyMemory.h"
#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLibrary.h"

#include <QCoro/QCoroTimer>
#include <QPointer>
#include <QQmlEngine>
#include <chrono>

namespace MirlPlayer {

namespace {

QByteArray storedBytes(const Preferences& defaults, const QString& key) {
    return defaults.object(key).toString().toUtf8();
}

} // namespace

SpotifyBrowser::SpotifyBrowser(SpotifyLibrary& library, SpotifyMemory& memory,
                               Preferences& defaults, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_memory(memory)
    , m_defaults(defaults)
    , m_clock(clock)
    , m_sleeper(SpotifyMemory::sleepSeconds) {
    m_shortcuts = LibraryShortcuts::load(storedBytes(defaults, LibraryShortcuts::shortcutsKey),
                                         LibraryShortcuts::defaultShortcuts());
    m_recents = LibraryShortcuts::loadHistory(storedBytes(defaults, LibraryShortcuts::historyKey));
    m_recentsModel.setItems(m_recents);
    const auto liked = [this](const SpotifyItem& item) { return likeState(item.uri); };
    m_list.setLikedSource(liked);
    m_recentsModel.setLikedSource(liked);
    connect(this, &SpotifyBrowser::likedChanged, this, [this] {
        m_list.likesChanged();
        m_recentsModel.likesChanged();
    });
    connect(&m_memory, &SpotifyMemory::dataChanged, this, &SpotifyBrowser::likedChanged);
    connect(&m_library, &SpotifyLibrary::connectedChanged, this, [this] {
        if (!m_library.connected())
            resetModel();
        else
            load();
    });
    connect(&m_memory, &SpotifyMemory::revisionChanged, this, [this] {
        if (m_memoryRevision != m_memory.revision()) {
            resetModel();
            m_memoryRevision = m_memory.revision();
        }
    });
}

SpotifyBrowser::~SpotifyBrowser() = default;

SpotifyBrowser& SpotifyBrowser::shared() {
    static SpotifyBrowser* browser = new SpotifyBrowser(
        SpotifyLibrary::shared(), SpotifyMemory::shared(), Preferences::shared(), Clock::system());
    return *browser;
}

SpotifyBrowser* SpotifyBrowser::create(QQmlEngine*, QJSEngine*) {
    QQmlEngine::setObjectOwnership(&shared(), QQmlEngine::CppOwnership);
    return &shared();
}

bool SpotifyBrowser::connected() const {
    return m_library.connected();
}

double SpotifyBrowser::wallNow() const {
    return m_clock.wallNow();
}

QVariantList SpotifyBrowser::routeList() const {
    QVariantList out;
    for (const Route& route : m_routes)
        out.append(route.toVariant());
    return out;
}

QVariantList SpotifyBrowser::shortcutList() const {
    QVariantList out;
    for (const LibraryShortcut& s : std::as_const(m_shortcuts))
        out.append(s.toVariant());
    return out;
}

// --- the visible list ---

std::pair<QList<SpotifyItem>, std::optional<QList<int>>> SpotifyBrowser::visibleRows() {
    if (isSearchHome())
        return {m_recents, std::nullopt};
    if (!isFiltering())
        return {m_items, std::nullopt};
    // The memo keeps a filter over thousands of saved songs off the drawing path.
    const QString text = m_filter.trimmed();
    const QString first = m_items.isEmpty() ? QString() : m_items.constFirst().id;
    if (!m_visibleMemo || m_visibleMemo->query != text || m_visibleMemo->count != m_items.size() ||
        m_visibleMemo->first != first)
        m_visibleMemo = VisibleMemo{text, m_items.size(), first, m_matcher.matching(m_items, text)};
    return {m_items, m_visibleMemo->result};
}

QList<SpotifyItem> SpotifyBrowser::visibleItems() {
    const auto [source, rows] = visibleRows();
    if (!rows)
        return source;
    QList<SpotifyItem> out;
    for (int row : *rows)
        out.append(source.at(row));
    return out;
}

void SpotifyBrowser::publishVisible() {
    const auto [source, rows] = visibleRows();
    m_list.setRows(source, rows);
}

void SpotifyBrowser::filterChanged() {
    if (isFiltering() && currentRoute().path.startsWith(u"me/tracks") && useMemorySaved())
        return publishVisible();
    if (isFiltering() && m_next && !m_loading)
        load(true);
    publishVisible();
}

bool SpotifyBrowser::useMemorySaved() {
    if (auto saved = m_memory.savedIfComplete()) {
        if (m_items.size() == saved->size() && !m_next)
            return true;
        newRequest();
        setItems(*saved);
        setNext(std::nullopt);
        setTotal(saved->size());
        setLoading(false);
        setError(std::nullopt);
        return true;
    }
    if (m_memory.needsConfirmation() && !m_confirmingSaved) {
        m_confirmingSaved = true;
        confirmSaved();
    }
    return false;
}

QCoro::Task<void> SpotifyBrowser::confirmSaved() {
    QPointer<SpotifyBrowser> self(this);
    co_await m_memory.syncSaved();
    if (!self)
        co_return;
    m_confirmingSaved = false;
    if (isFiltering())
        filterChanged();
}

// --- appearing, resets, navigation memory ---

void SpotifyBrowser::appear() {
    [](SpotifyBrowser* browser) -> QCoro::Task<void> {
        try {
            co_await browser->prepare();
        } catch (...) {
        }
    }(this);
}

QCoro::Task<void> SpotifyBrowser::prepare() {
    if (!connected())
        co_return;
    if (m_memoryRevision != m_memory.revision()) {
        resetModel();
        m_memoryRevision = m_memory.revision();
    }
    QPointer<SpotifyBrowser> self(this);
    try {
        co_await m_memory.prepareMemory();
    } catch (const SpotifyError& e) {
        if (self && !e.isCancellation())
            setError(e.localizedDescription());
        co_return;
    }
    if (!self)
        co_return;
    if (!m_restored) {
        m_restored = true;
        if (const auto& navigation = m_memory.data().navigation) {
            const MemoryNavigation saved = *navigation;
            setTab(saved.tab);
            if (m_query != saved.query) {
                m_query = saved.query;
                Q_EMIT queryChanged();
            }
            setSearchKind(saved.searchKind);
            setRoutes(saved.routes);
            setFilterText(saved.filter);
        }
        m_scrollPositions = m_memory.data().positions;
        for (auto it = m_memory.livePositions().cbegin(); it != m_memory.livePositions().cend();
             ++it)
            m_scrollPositions.insert(it.key(), it.value());
    }
    if (m_items.isEmpty())
        load();
}

void SpotifyBrowser::disappear() {
    m_memory.storeNavigation(m_tab, m_query, m_searchKind, m_routes, m_filter);
}

void SpotifyBrowser::rememberPosition(const QString& key, const QString& value) {
    m_scrollPositions.insert(key, value);
    m_memory.rememberPosition(key, value);
}

void SpotifyBrowser::newRequest() {
    ++m_requestID; // cancels `work`: its answer finds a newer id and is dropped
}

void SpotifyBrowser::resetModel() {
    newRequest();
    setItems({});
    setNext(std::nullopt);
    setTotal(std::nullopt);
    setError(std::nullopt);
    setLoading(false);
    setRoutes({});
    setFilterText({});
    m_cache.clear();
    m_scrollPositions.clear();
    m_liked.clear();
    m_restored = false;
    Q_EMIT likedChanged();
    publishVisible();
}

} // namespace MirlPlayer
