#include "spotify/SpotifyItem.h"

#include "spotify/StoredJSON.h"

#include <QJsonArray>

namespace MirlPlayer {

namespace {

// A JSON value that is a list whose every entry is an object; none for anything else.
std::optional<QJsonArray> objectList(const QJsonValue& value) {
    if (!value.isArray())
        return std::nullopt;
    const QJsonArray list = value.toArray();
    for (const QJsonValue& entry : list)
        if (!entry.isObject())
            return std::nullopt;
    return list;
}

// JSON numbers are doubles; an integer is one without a fractional part.
std::optional<qint64> integerValue(const QJsonValue& value) {
    if (!value.isDouble())
        return std::nullopt;
    const double d = value.toDouble();
    if (d != double(qint64(d)))
        return std::nullopt;
    return qint64(d);
}

std::optional<QUrl> imageURL(const QJsonObject& image) {
    const QJsonValue url = image.value(u"url");
    if (!url.isString())
        return std::nullopt;
    QUrl parsed(url.toString(), QUrl::StrictMode);
    if (!parsed.isValid() || parsed.isEmpty())
        return std::nullopt;
    return parsed;
}

QString capitalized(const QString& word) {
    if (word.isEmpty())
        return word;
    return word.left(1).toUpper() + word.mid(1);
}

std::optional<QStringList> stringList(const QJsonValue& value) {
    if (!value.isArray())
        return std::nullopt;
    const QJsonArray array = value.toArray();
    QStringList out;
    out.reserve(array.size());
    for (const QJsonValue& v : array) {
        if (!v.isString())
            return std::nullopt;
        out.append(v.toString());
    }
    return out;
}

} // namespace

std::optional<QString> albumLabel(const QJsonObject& object) {
    const QString type = object.value(u"album_type").toString();
    if (type == u"album")
        return QStringLiteral("Album");
    if (type == u"compilation")
        return QStringLiteral("Compilation");
    if (type == u"single") {
        const auto tracks = integerValue(object.value(u"total_tracks"));
        return (tracks && *tracks > 3) ? QStringLiteral("EP") : QStringLiteral("Single");
    }
    return std::nullopt;
}

std::optional<SpotifyItem> itemFromJSON(const QJsonObject& object) {
    const QJsonValue id = object.value(u"id"), name = object.value(u"name"),
                     uri = object.value(u"uri"), type = object.value(u"type");
    if (!id.isString() || !name.isString() || !uri.isString() || !type.isString())
        return std::nullopt;
    const QString kind = type.toString();
    if (kind != u"track" && kind != u"playlist" && kind != u"artist" && kind != u"album")
        return std::nullopt;

    const QJsonValue albumValue = object.value(u"album");
    const std::optional<QJsonObject> album =
        albumValue.isObject() ? std::optional(albumValue.toObject()) : std::nullopt;
    std::optional<QJsonArray> images = objectList(object.value(u"images"));
    if (!images && album)
        images = objectList(album->value(u"images"));

    SpotifyItem item;
    item.name = name.toString();
    item.kind = kind;
    item.uri = QStringLiteral("spotify:") + kind + u':' + id.toString();
    item.id = item.uri;

    const QJsonValue artists = object.value(u"artists");
    if (const auto list = objectList(artists)) {
        QStringList names;
        for (const QJsonValue& entry : *list) {
            const QJsonObject artist = entry.toObject();
            const QJsonValue artistName = artist.value(u"name");
            const QJsonValue artistID = artist.value(u"id");
            if (artistName.isString())
                names.append(artistName.toString());
            if (artistName.isString() && artistID.isString()) {
                item.artistIDs.append(artistID.toString());
                item.artistNames.append(artistName.toString());
            }
        }
        item.subtitle = names.join(QStringLiteral(", "));
    } else {
        item.subtitle = capitalized(kind);
    }

    // Spotify lists covers from large to small.
    if (images && !images->isEmpty()) {
        item.image = imageURL(images->last().toObject());
        item.largeImage = imageURL(images->first().toObject());
    }
    if (album) {
        if (album->value(u"uri").isString())
            item.albumURI = album->value(u"uri").toString();
        if (album->value(u"name").isString())
            item.albumName = album->value(u"name").toString();
    }
    item.durationMs = integerValue(object.value(u"duration_ms"));
    const QJsonValue explicitValue = object.value(u"explicit");
    item.explicit_ = explicitValue.isBool() && explicitValue.toBool();

    if (kind == u"album") {
        QStringList parts;
        const QJsonValue release = object.value(u"release_date");
        if (release.isString())
            parts.append(release.toString().left(4));
        if (const auto label = albumLabel(object))
            parts.append(*label);
        item.detail = parts.join(QStringLiteral(" • "));
    }
    return item;
}

SpotifyPage pageFromJSON(const QJsonObject& object) {
    SpotifyPage page;
    if (const auto elements = objectList(object.value(u"items"))) {
        for (const QJsonValue& value : *elements) {
            const QJsonObject element = value.toObject();
            QJsonObject target = element;
            if (element.value(u"item").isObject())
                target = element.value(u"item").toObject();
            else if (element.value(u"track").isObject())
                target = element.value(u"track").toObject();
            if (auto item = itemFromJSON(target))
                page.items.append(std::move(*item));
        }
    }
    if (object.value(u"next").isString())
        page.next = object.value(u"next").toString();
    page.total = integerValue(object.value(u"total"));
    return page;
}

QString bareID(const SpotifyItem& item) {
    const QStringList parts = item.uri.split(u':');
    return parts.isEmpty() ? QString() : parts.last();
}

QList<SpotifyItem> artistItems(const SpotifyItem& item) {
    QList<SpotifyItem> out;
    const qsizetype count = std::min(item.artistIDs.size(), item.artistNames.size());
    for (qsizetype i = 0; i < count; ++i) {
        SpotifyItem artist;
        artist.uri = QStringLiteral("spotify:artist:") + item.artistIDs[i];
        artist.id = artist.uri;
        artist.name = item.artistNames[i];
        artist.subtitle = QStringLiteral("Artist");
        artist.kind = QStringLiteral("artist");
        out.append(std::move(artist));
    }
    return out;
}

QJsonObject SpotifyItem::toStored() const {
    // Readers look keys up by name, so the order QJsonObject writes them in does not matter.
    QJsonObject o;
    o.insert(u"id", id);
    o.insert(u"name", name);
    o.insert(u"subtitle", subtitle);
    o.insert(u"kind", kind);
    if (image)
        o.insert(u"image", image->toString());
    o.insert(u"uri", uri);
    if (largeImage)
        o.insert(u"largeImage", largeImage->toString());
    o.insert(u"detail", detail);
    if (durationMs)
        o.insert(u"durationMs", double(*durationMs));
    o.insert(u"explicit", explicit_);
    o.insert(u"artistIDs", QJsonArray::fromStringList(artistIDs));
    if (albumURI)
        o.insert(u"albumURI", *albumURI);
    if (albumName)
        o.insert(u"albumName", *albumName);
    o.insert(u"artistNames", QJsonArray::fromStringList(artistNames));
    return o;
}

std::optional<SpotifyItem> SpotifyItem::fromStored(const QJsonObject& o, StringPool* pool) {
    using namespace Stored;
    SpotifyItem item;
    if (!string(o, u"id", item.id) || !string(o, u"name", item.name) ||
        !string(o, u"subtitle", item.subtitle) || !string(o, u"kind", item.kind) ||
        !string(o, u"uri", item.uri) || !string(o, u"detail", item.detail))
        return std::nullopt;
    const QJsonValue explicitValue = o.value(u"explicit");
    if (!explicitValue.isBool())
        return std::nullopt;
    item.explicit_ = explicitValue.toBool();
    auto ids = stringList(o.value(u"artistIDs"));
    auto names = stringList(o.value(u"artistNames"));
    if (!ids || !names)
        return std::nullopt;
    item.artistIDs = std::move(*ids);
    item.artistNames = std::move(*names);
    // Optional keys: absent is fine, present with the wrong type spoils the record.
    if (!optionalURL(o, u"image", item.image) || !optionalURL(o, u"largeImage", item.largeImage) ||
        !optionalString(o, u"albumURI", item.albumURI) ||
        !optionalString(o, u"albumName", item.albumName) ||
        !optionalInteger(o, u"durationMs", item.durationMs))
        return std::nullopt;
    // `id` and `uri` are one text; artists, albums and kinds repeat across a whole library.
    if (item.uri == item.id)
        item.uri = item.id;
    if (pool) {
        pool->share(item.kind);
        pool->share(item.subtitle);
        for (QString& id : item.artistIDs)
            pool->share(id);
        for (QString& name : item.artistNames)
            pool->share(name);
        if (item.albumURI)
            pool->share(*item.albumURI);
        if (item.albumName)
            pool->share(*item.albumName);
    }
    return item;
}

} // namespace MirlPlayer
