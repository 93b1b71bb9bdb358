// The artist's songs in the user's Liked Songs: computed from the library memory and the
// browser's like states; there is no Web API search for them.
#include "library/ArtistPageModel.h"
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"

#include <QPointer>
#include <QSet>

namespace MirlPlayer {

QList<SpotifyItem> ArtistPageModel::likedTracksForArtist() {
    const QMap<QString, bool>& liked = m_browser.liked();
    QList<SpotifyItem> candidates;
    if (m_memory.verified())
        for (const SpotifyItem& item : m_memory.data().saved)
            if (liked.value(item.uri, true))
                candidates.append(item);
    for (const SpotifyItem& item : std::as_const(m_popular)) {
        const auto known = liked.constFind(item.uri);
        if (known != liked.cend() ? *known : m_memory.isSavedInMemory(item.uri))
            candidates.append(item);
    }
    const QString id = bareOf(m_artistURI);
    QList<SpotifyItem> out;
    QSet<QString> seen;
    for (const SpotifyItem& item : std::as_const(candidates))
        if (item.artistIDs.contains(id) && !seen.contains(item.uri)) {
            seen.insert(item.uri);
            out.append(item);
        }
    return out;
}

void ArtistPageModel::publishLiked() {
    m_likedModel.setItems(likedTracksForArtist());
    m_likedModel.likesChanged();
}

void ArtistPageModel::openLikedSection() {
    [](ArtistPageModel* model) -> QCoro::Task<void> {
        QPointer<ArtistPageModel> self(model);
        model->m_loadingLiked = true;
        Q_EMIT model->loadingLikedChanged();
        co_await model->m_memory.syncSaved();
        if (!self)
            co_return;
        model->m_loadingLiked = false;
        Q_EMIT model->loadingLikedChanged();
        model->publishLiked();
    }(this);
}

} // namespace MirlPlayer
