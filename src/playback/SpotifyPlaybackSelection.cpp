#include "playback/SpotifyPlaybackSelection.h"

#include "spotify/SpotifyError.h"

#include <QRegularExpression>

namespace MirlPlayer {

bool SpotifyPlaybackSelection::isTrackURI(const QString& uri) {
    static const QRegularExpression pattern(QStringLiteral("^spotify:track:[A-Za-z0-9]+$"));
    return pattern.match(uri).hasMatch() && !uri.contains(u'\n');
}

bool SpotifyPlaybackSelection::isContextURI(const QString& uri) {
    static const QRegularExpression pattern(QStringLiteral(
        "^spotify:((playlist|album|artist):[A-Za-z0-9]+|user:[A-Za-z0-9._-]+:collection)$"));
    return pattern.match(uri).hasMatch() && !uri.contains(u'\n');
}

SpotifyPlaybackSelection::SpotifyPlaybackSelection(const QString& track,
                                                   const std::optional<QString>& context)
    : trackURI(track) {
    if (!isTrackURI(track))
        throw SpotifyFailure(QStringLiteral("This track cannot be played in Spotify."));
    if (context && isContextURI(*context))
        contextURI = context;
}

} // namespace MirlPlayer
