// The play request for a clicked song: the track, the list it was played from, and the songs
// after it in that list.
#include "library/SpotifyBrowser.h"
#include "library/SpotifyMemory.h"
#include "playback/SpotifyQueue.h"
#include "spotify/SpotifyError.h"

namespace MirlPlayer {

std::optional<SpotifyPlaybackSelection>
SpotifyBrowser::selectionFor(const SpotifyItem& item) const {
    if (item.kind != u"track")
        return std::nullopt;
    std::optional<QString> context;
    const Route route = currentRoute();
    if (route.kind == u"playlist" || route.kind == u"album")
        context = route.uri;
    else if (m_routes.isEmpty() && m_tab == u"Liked Songs" && m_memory.verified() &&
             !m_memory.data().owner.isEmpty())
        context = m_memory.data().owner; // the account's collection
    try {
        SpotifyPlaybackSelection selection = SpotifyQueue::selectionOf(item, context);
        const qsizetype at = std::find_if(m_items.cbegin(), m_items.cend(),
                                          [&](const SpotifyItem& i) { return i.id == item.id; }) -
                             m_items.cbegin();
        for (qsizetype i = at + 1;
             i < m_items.size() && selection.following.size() < selectionWindow; ++i)
            if (m_items.at(i).kind == u"track")
                selection.following.append(m_items.at(i).uri);
        return selection;
    } catch (const SpotifyFailure&) {
        return std::nullopt; // not a track Spotify can play
    }
}

} // namespace MirlPlayer
