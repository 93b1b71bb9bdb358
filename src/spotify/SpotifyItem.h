#pragma once

#include <QJsonObject>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace MirlPlayer {

// Equal texts of one document share one string: a library of thousands of songs names the same
// artists, albums and kinds over and over.
class StringPool {
public:
    void share(QString& text) {
        const auto known = m_known.constFind(text);
        if (known != m_known.cend())
            text = *known;
        else
            m_known.insert(text);
    }

private:
    QSet<QString> m_known;
};

// The one record of anything Spotify calls a track, album, artist or playlist: in lists, in the
// library memory, in the search history and in the queue. `id` and `uri` both hold the Spotify
// URI; `artistIDs` holds bare ids, in step with `artistNames`.
struct SpotifyItem {
    QString id;
    QString name;
    QString subtitle;
    QString kind; // "track", "playlist", "artist" or "album"
    std::optional<QUrl> image;
    QString uri;
    std::optional<QUrl> largeImage;
    QString detail;
    std::optional<qint64> durationMs;
    bool explicit_ = false; // stored as "explicit"
    QStringList artistIDs;
    std::optional<QString> albumURI;
    std::optional<QString> albumName;
    QStringList artistNames;

    bool operator==(const SpotifyItem&) const = default;

    // The stored form: the keys above in field order, optional ones left out when absent.
    QJsonObject toStored() const;
    // Fails on a missing or mistyped required key; the caller then throws the whole document away.
    // With a pool, repeated texts are shared with the pool's earlier items.
    static std::optional<SpotifyItem> fromStored(const QJsonObject& object,
                                                 StringPool* pool = nullptr);
};

// One page of items, with the absolute address of the next page, if any.
struct SpotifyPage {
    QList<SpotifyItem> items;
    std::optional<QString> next;
    std::optional<qint64> total;

    bool operator==(const SpotifyPage&) const = default;
};

// Decodes a Web API object; none for anything that is not a track, album, artist or playlist.
std::optional<SpotifyItem> itemFromJSON(const QJsonObject& object);
// Decodes a page of saved tracks, playlist entries or a plain list alike; entries that are no
// item (local files, podcast episodes, removed entries) are dropped.
SpotifyPage pageFromJSON(const QJsonObject& object);
// "Album", "Compilation", "EP" or "Single" from an album object; none for anything else.
std::optional<QString> albumLabel(const QJsonObject& object);
// The last part of the item's URI ("" when it has none).
QString bareID(const SpotifyItem& item);
// One artist item per artist of the item, pairing ids and names by position.
QList<SpotifyItem> artistItems(const SpotifyItem& item);

} // namespace MirlPlayer
