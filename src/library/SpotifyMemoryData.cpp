#include "library/SpotifyMemoryData.h"

#include "spotify/StoredJSON.h"

#include <QJsonDocument>
#include <QThreadPool>

namespace MirlPlayer {

namespace {

using namespace Stored;

QJsonObject encodePage(const MemoryPage& page) {
    QJsonObject o{{QStringLiteral("items"), itemArray(page.items)}};
    if (page.next)
        o.insert(u"next", *page.next);
    if (page.total)
        o.insert(u"total", double(*page.total));
    if (page.fetched)
        o.insert(u"fetched", *page.fetched - kReferenceEpoch);
    return o;
}

std::optional<MemoryPage> decodePage(const QJsonValue& value) {
    MemoryPage page;
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    if (!items(o.value(u"items"), page.items) || !optionalString(o, u"next", page.next) ||
        !optionalInteger(o, u"total", page.total) || !optionalNumber(o, u"fetched", page.fetched))
        return std::nullopt;
    if (page.fetched)
        *page.fetched += kReferenceEpoch;
    return page;
}

QJsonObject encodeNavigation(const MemoryNavigation& n) {
    QJsonArray routes;
    for (const SpotifyRoute& route : n.routes)
        routes.append(route.toStored());
    return {{QStringLiteral("tab"), n.tab},
            {QStringLiteral("query"), n.query},
            {QStringLiteral("searchKind"), n.searchKind},
            {QStringLiteral("routes"), routes},
            {QStringLiteral("filter"), n.filter}};
}

std::optional<MemoryNavigation> decodeNavigation(const QJsonObject& o) {
    MemoryNavigation n;
    if (!string(o, u"tab", n.tab) || !string(o, u"query", n.query) ||
        !string(o, u"searchKind", n.searchKind) || !string(o, u"filter", n.filter) ||
        !o.value(u"routes").isArray())
        return std::nullopt;
    for (const QJsonValue& entry : o.value(u"routes").toArray()) {
        auto route = entry.isObject() ? SpotifyRoute::fromStored(entry.toObject()) : std::nullopt;
        if (!route)
            return std::nullopt;
        n.routes.append(std::move(*route));
    }
    return n;
}

QJsonObject encodeArtist(const MemoryArtistEntry& a) {
    QJsonObject o;
    if (a.artist)
        o.insert(u"artist", a.artist->toStored());
    o.insert(u"popular", itemArray(a.popular));
    o.insert(u"releases", itemArray(a.releases));
    if (a.next)
        o.insert(u"next", *a.next);
    o.insert(u"fetched", a.fetched - kReferenceEpoch);
    return o;
}

std::optional<MemoryArtistEntry> decodeArtist(const QJsonValue& value) {
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    MemoryArtistEntry a;
    const QJsonValue artist = o.value(u"artist");
    if (!artist.isUndefined() && !artist.isNull()) {
        a.artist = artist.isObject() ? SpotifyItem::fromStored(artist.toObject()) : std::nullopt;
        if (!a.artist)
            return std::nullopt;
    }
    if (!items(o.value(u"popular"), a.popular) || !items(o.value(u"releases"), a.releases) ||
        !optionalString(o, u"next", a.next) || !o.value(u"fetched").isDouble())
        return std::nullopt;
    a.fetched = o.value(u"fetched").toDouble() + kReferenceEpoch;
    return a;
}

std::optional<MemorySnapshot> decodeSnapshot(const QJsonObject& o);

} // namespace

QByteArray encodeMemory(const MemorySnapshot& s) {
    QJsonObject o{{QStringLiteral("owner"), s.owner},
                  {QStringLiteral("saved"), itemArray(s.saved)}};
    if (s.savedNext)
        o.insert(u"savedNext", *s.savedNext);
    o.insert(u"complete", s.complete);
    QJsonObject pages;
    for (auto it = s.pages.cbegin(); it != s.pages.cend(); ++it)
        pages.insert(it.key(), encodePage(it.value()));
    o.insert(u"pages", pages);
    QJsonObject positions;
    for (auto it = s.positions.cbegin(); it != s.positions.cend(); ++it)
        positions.insert(it.key(), it.value());
    o.insert(u"positions", positions);
    if (s.navigation)
        o.insert(u"navigation", encodeNavigation(*s.navigation));
    if (s.artists) {
        QJsonObject artists;
        for (auto it = s.artists->cbegin(); it != s.artists->cend(); ++it)
            artists.insert(it.key(), encodeArtist(it.value()));
        o.insert(u"artists", artists);
    }
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

std::optional<MemorySnapshot> decodeMemory(const QByteArray& bytes) {
    QJsonParseError parseError{};
    QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    std::optional<MemorySnapshot> snapshot = decodeSnapshot(document.object());
    // Freeing a tree of a few hundred thousand values takes as long as a good part of the parse;
    // the thread pool does it while the caller goes on.
    QThreadPool::globalInstance()->start([document = std::move(document)] {});
    return snapshot;
}

namespace {

std::optional<MemorySnapshot> decodeSnapshot(const QJsonObject& o) {
    MemorySnapshot s;
    s.savedNext.reset();
    StringPool pool;
    if (!string(o, u"owner", s.owner) || !items(o.value(u"saved"), s.saved, &pool) ||
        !optionalString(o, u"savedNext", s.savedNext) || !o.value(u"complete").isBool() ||
        !o.value(u"pages").isObject() || !o.value(u"positions").isObject())
        return std::nullopt;
    s.complete = o.value(u"complete").toBool();

    const QJsonObject pages = o.value(u"pages").toObject();
    for (auto it = pages.begin(); it != pages.end(); ++it) {
        auto page = decodePage(it.value());
        if (!page)
            return std::nullopt;
        s.pages.insert(it.key(), std::move(*page));
    }
    const QJsonObject positions = o.value(u"positions").toObject();
    for (auto it = positions.begin(); it != positions.end(); ++it) {
        if (!it.value().isString())
            return std::nullopt;
        s.positions.insert(it.key(), it.value().toString());
    }
    const QJsonValue navigation = o.value(u"navigation");
    if (!navigation.isUndefined() && !navigation.isNull()) {
        s.navigation =
            navigation.isObject() ? decodeNavigation(navigation.toObject()) : std::nullopt;
        if (!s.navigation)
            return std::nullopt;
    }
    const QJsonValue artists = o.value(u"artists");
    if (!artists.isUndefined() && !artists.isNull()) {
        if (!artists.isObject())
            return std::nullopt;
        s.artists.emplace();
        const QJsonObject map = artists.toObject();
        for (auto it = map.begin(); it != map.end(); ++it) {
            auto entry = decodeArtist(it.value());
            if (!entry)
                return std::nullopt;
            s.artists->insert(it.key(), std::move(*entry));
        }
    }
    return s;
}

} // namespace

} // namespace MirlPlayer
