// The browser's like states: what it knows, what it asks, and the optimistic like.
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"
#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLibrary.h"

#include <QPointer>

namespace MirlPlayer {

bool SpotifyBrowser::isLiked(const SpotifyItem& item) {
    return isLikedURI(item.uri);
}

bool SpotifyBrowser::isLikedURI(const QString& uri) {
    return likeState(uri).value_or(false);
}

std::optional<bool> SpotifyBrowser::likeState(const QString& uri) {
    if (const auto known = m_liked.constFind(uri); known != m_liked.cend())
        return *known;
    if (m_memory.isSavedInMemory(uri))
        return true;
    return std::nullopt;
}

void SpotifyBrowser::queryLiked(const QList<SpotifyItem>& items, bool assumeLiked) {
    QStringList unknown;
    bool changed = false;
    for (const SpotifyItem& item : items) {
        if (item.kind != u"track")
            continue;
        if (assumeLiked) {
            changed |= m_liked.value(item.uri, false) != true;
            m_liked.insert(item.uri, true);
        } else if (!m_liked.contains(item.uri) && !unknown.contains(item.uri)) {
            unknown.append(item.uri);
        }
    }
    if (changed)
        Q_EMIT likedChanged();
    if (!unknown.isEmpty())
        runQueryLiked(unknown);
}

QCoro::Task<void> SpotifyBrowser::runQueryLiked(QStringList uris) {
    QPointer<SpotifyBrowser> self(this);
    try {
        const QMap<QString, bool> answers = co_await m_library.areSaved(uris);
        if (!self)
            co_return;
        bool changed = false;
        // A like made during the call has set its key; the answer must not undo it.
        for (auto it = answers.cbegin(); it != answers.cend(); ++it)
            if (!m_liked.contains(it.key())) {
                m_liked.insert(it.key(), it.value());
                changed = true;
            }
        if (changed)
            Q_EMIT likedChanged();
    } catch (...) {
        // Like states are a nicety; a failure leaves them unknown.
    }
}

void SpotifyBrowser::setLiked(const SpotifyItem& item, bool wanted) {
    if (item.kind != u"track" || isLiked(item) == wanted)
        return;
    const auto known = m_liked.constFind(item.uri);
    const std::optional<bool> previous =
        known != m_liked.cend() ? std::optional(*known) : std::nullopt;
    m_liked.insert(item.uri, wanted);
    setLikeError(std::nullopt);
    Q_EMIT likedChanged();
    runSetLiked(item, wanted, previous);
}

void SpotifyBrowser::setLikedRow(int row, bool wanted) {
    if (row >= 0 && row < m_list.count())
        setLiked(m_list.at(row), wanted);
}

QCoro::Task<void> SpotifyBrowser::runSetLiked(SpotifyItem item, bool wanted,
                                              std::optional<bool> previous) {
    QPointer<SpotifyBrowser> self(this);
    try {
        QStringList uris(item.uri);
        co_await m_library.setSaved(uris, wanted);
        if (!self)
            co_return;
        m_memory.applyMembership(item, wanted);
        m_cache.removeIf([](auto it) { return it.key().startsWith(u"me/tracks"); });
    } catch (const SpotifyError& e) {
        if (!self)
            co_return;
        if (previous)
            m_liked.insert(item.uri, *previous);
        else
            m_liked.remove(item.uri);
        Q_EMIT likedChanged();
        if (!e.isCancellation())
            setLikeError(e.localizedDescription());
    }
}

void SpotifyBrowser::openAlbumOfTrack(const SpotifyItem& track) {
    if (track.albumURI) {
        SpotifyItem album;
        album.id = album.uri = *track.albumURI;
        album.name = track.albumName.value_or(QStringLiteral("Album"));
        album.subtitle = QStringLiteral("Album");
        album.kind = QStringLiteral("album");
        album.image = track.largeImage ? track.largeImage : track.image;
        openItem(album);
        return;
    }
    runOpenAlbum(track);
}

void SpotifyBrowser::openAlbumOfRow(int row) {
    if (row >= 0 && row < m_list.count())
        openAlbumOfTrack(m_list.at(row));
}

QCoro::Task<void> SpotifyBrowser::runOpenAlbum(SpotifyItem track) {
    QPointer<SpotifyBrowser> self(this);
    try {
        const QJsonObject object =
            co_await m_library.getJSON(QStringLiteral("tracks/") + bareID(track));
        if (!self)
            co_return;
        if (auto answer = itemFromJSON(object); answer && answer->albumURI)
            openAlbumOfTrack(*answer);
    } catch (const SpotifyError& e) {
        if (self && !e.isCancellation())
            setLikeError(e.localizedDescription());
    }
}

} // namespace MirlPlayer
