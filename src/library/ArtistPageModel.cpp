#include "library/ArtistPageModel.h"

#include "core/Clock.h"
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"
#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLibrary.h"

#include <QPointer>
#include <QSet>
#include <QUrlQuery>

namespace MirlPlayer {

QString ArtistPageModel::bareOf(const QString& uri) {
    return uri.section(u':', -1);
}

ArtistPageModel::ArtistPageModel(QObject* parent)
    : ArtistPageModel(SpotifyLibrary::shared(), SpotifyMemory::shared(), SpotifyBrowser::shared(),
                      Clock::system(), parent) {}

ArtistPageModel::ArtistPageModel(SpotifyLibrary& library, SpotifyMemory& memory,
                                 SpotifyBrowser& browser, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_memory(memory)
    , m_browser(browser)
    , m_clock(clock) {
    const auto liked = [this](const SpotifyItem& item) { return m_browser.likeState(item.uri); };
    for (SpotifyItemListModel* model : {&m_popularModel, &m_releasesModel, &m_likedModel})
        model->setLikedSource(liked);
    // The liked section is computed from the memory and the browser's like states.
    connect(&m_browser, &SpotifyBrowser::likedChanged, this, [this] {
        m_popularModel.likesChanged();
        publishLiked();
    });
}

QString ArtistPageModel::label(Releases filter) {
    switch (filter) {
    case Releases::Albums:
        return QStringLiteral("Albums");
    case Releases::Singles:
        return QStringLiteral("Singles and EPs");
    case Releases::All:
        break;
    }
    return QStringLiteral("All");
}

QString ArtistPageModel::includeGroups(Releases filter) {
    switch (filter) {
    case Releases::Albums:
        return QStringLiteral("album");
    case Releases::Singles:
        return QStringLiteral("single");
    case Releases::All:
        break;
    }
    return QStringLiteral("album,single");
}

QVariantMap ArtistPageModel::artistMap() const {
    if (!m_artist)
        return {};
    return {{QStringLiteral("name"), m_artist->name},
            {QStringLiteral("uri"), m_artist->uri},
            {QStringLiteral("image"), m_artist->largeImage.value_or(QUrl())},
            {QStringLiteral("subtitle"), m_artist->subtitle}};
}

void ArtistPageModel::loadArtist(const QString& uri, const QString& name) {
    if (uri == m_artistURI && m_artist)
        return;
    // A filtered discography is partial and is not kept.
    if (!m_artistURI.isEmpty() && m_artist && m_filter == Releases::All)
        m_visited.insert(m_artistURI, {m_artist, m_popular, m_releases, m_nextReleases});
    if (const auto visit = m_visited.constFind(uri); visit != m_visited.cend()) {
        show(uri, *visit);
        return;
    }
    if (m_memory.data().artists) {
        const auto& artists = *m_memory.data().artists;
        if (const auto entry = artists.constFind(uri); entry != artists.cend()) {
            show(uri, {entry->artist, entry->popular, entry->releases, entry->next});
            if (m_clock.wallNow() - entry->fetched >= staleAfter)
                refreshArtist(name, m_generation);
            return;
        }
    }
    show(uri, {});
    fetchArtist(name, m_generation);
    loadReleases(false);
}

void ArtistPageModel::show(const QString& uri, const Visit& visit) {
    ++m_generation;
    m_artistURI = uri;
    m_artist = visit.artist;
    setError(std::nullopt);
    if (m_filter != Releases::All) {
        m_filter = Releases::All;
        Q_EMIT filterChanged();
    }
    setPopular(visit.popular);
    m_nextReleases = visit.next;
    setReleases(visit.releases);
    setLoadingReleases(false);
    Q_EMIT artistChanged();
    publishLiked();
}

QCoro::Task<std::optional<SpotifyItem>> ArtistPageModel::fetchArtistItem(QString id) {
    const QJsonObject object = co_await m_library.getJSON(QStringLiteral("artists/") + id);
    co_return itemFromJSON(object);
}

QCoro::Task<QList<SpotifyItem>> ArtistPageModel::fetchPopular(QString id, QString name) {
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("q"), QStringLiteral("artist:\"") + name + u'"');
    query.addQueryItem(QStringLiteral("type"), QStringLiteral("track"));
    query.addQueryItem(QStringLiteral("limit"), QStringLiteral("10"));
    const QJsonObject object =
        co_await m_library.getJSON(QStringLiteral("search?") + query.toString(QUrl::FullyEncoded));
    // No top-tracks endpoint: a search by the artist's name, kept to this artist, one per title,
    // so a live version with the title of a hit is not listed twice.
    QList<SpotifyItem> out;
    QSet<QString> titles;
    for (const SpotifyItem& track : pageFromJSON(object.value(u"tracks").toObject()).items) {
        if (!track.artistIDs.contains(id) || titles.contains(track.name.toLower()))
            continue;
        titles.insert(track.name.toLower());
        out.append(track);
    }
    co_return out;
}

QCoro::Task<void> ArtistPageModel::fetchArtist(QString name, int generation) {
    QPointer<ArtistPageModel> self(this);
    const QString id = bareOf(m_artistURI);
    try {
        // Both requests go out together.
        auto artistTask = fetchArtistItem(id);
        auto popularTask = fetchPopular(id, name);
        const std::optional<SpotifyItem> artist = co_await std::move(artistTask);
        const QList<SpotifyItem> popular = co_await std::move(popularTask);
        if (!self || generation != m_generation)
            co_return;
        m_artist = artist;
        Q_EMIT artistChanged();
        setPopular(popular);
        m_browser.queryLiked(popular, false);
        store();
    } catch (const SpotifyError& e) {
        if (self && generation == m_generation && !e.isCancellation())
            setError(e.localizedDescription());
    }
}

QCoro::Task<void> ArtistPageModel::refreshArtist(QString name, int generation) {
    QPointer<ArtistPageModel> self(this);
    const QString uri = m_artistURI;
    const QString id = bareOf(uri);
    try {
        const std::optional<SpotifyItem> artist = co_await fetchArtistItem(id);
        const QList<SpotifyItem> popular = co_await fetchPopular(id, name);
        if (!self || generation != m_generation || uri != m_artistURI)
            co_return;
        m_artist = artist;
        Q_EMIT artistChanged();
        if (!popular.isEmpty())
            setPopular(popular);
        m_browser.queryLiked(m_popular, false);
        store();
    } catch (...) {
        // The remembered page stays as it is.
    }
}

void ArtistPageModel::store() {
    if (m_artistURI.isEmpty() || !m_artist)
        return;
    m_memory.storeArtist(m_artistURI,
                         {m_artist, m_popular, m_releases, m_nextReleases, m_clock.wallNow()});
}

void ArtistPageModel::loadReleases(bool more) {
    QString address;
    if (more) {
        if (!m_nextReleases || m_loadingReleases)
            return;
        address = *m_nextReleases;
    } else {
        address = QStringLiteral("artists/") + bareOf(m_artistURI) +
                  QStringLiteral("/albums?limit=10&include_groups=") + includeGroups(m_filter);
        m_nextReleases.reset();
        setReleases({});
    }
    setLoadingReleases(true);
    fetchReleases(address, m_generation, m_filter);
}

QCoro::Task<void> ArtistPageModel::fetchReleases(QString address, int generation, Releases filter) {
    QPointer<ArtistPageModel> self(this);
    try {
        const bool first = m_releases.isEmpty();
        const SpotifyPage page = pageFromJSON(co_await m_library.getJSON(address, false));
        if (!self || generation != m_generation || filter != m_filter)
            co_return;
        QSet<QString> known;
        for (const SpotifyItem& item : std::as_const(m_releases))
            known.insert(item.id);
        QList<SpotifyItem> releases = m_releases;
        for (const SpotifyItem& item : page.items)
            if (!known.contains(item.id)) {
                known.insert(item.id);
                releases.append(item);
            }
        m_nextReleases = page.next;
        setReleases(releases);
        if (first && m_filter == Releases::All)
            store();
        setLoadingReleases(false);
    } catch (const SpotifyError& e) {
        if (self && generation == m_generation) {
            if (!e.isCancellation())
                setError(e.localizedDescription());
            setLoadingReleases(false);
        }
    }
}

void ArtistPageModel::setFilter(Releases filter) {
    if (filter == m_filter)
        return;
    m_filter = filter;
    Q_EMIT filterChanged();
    loadReleases(false);
}

void ArtistPageModel::setError(std::optional<QString> value) {
    if (m_error != value) {
        m_error = std::move(value);
        Q_EMIT errorChanged();
    }
}

void ArtistPageModel::setLoadingReleases(bool value) {
    if (m_loadingReleases != value) {
        m_loadingReleases = value;
        Q_EMIT loadingReleasesChanged();
    }
}

void ArtistPageModel::setReleases(const QList<SpotifyItem>& items) {
    m_releases = items;
    m_releasesModel.setItems(items);
    Q_EMIT releasesChanged();
}

void ArtistPageModel::setPopular(const QList<SpotifyItem>& items) {
    m_popular = items;
    m_popularModel.setItems(items);
    publishLiked();
}

} // namespace MirlPlayer
