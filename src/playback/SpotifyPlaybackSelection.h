#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace MirlPlayer {

// A validated request to play one Spotify track, optionally inside the list it was played from.
// The patterns are strict on purpose: these strings are handed to the player, and one that
// passes cannot carry a quote or any other syntax.
struct SpotifyPlaybackSelection {
    // Throws SpotifyFailure("This track cannot be played in Spotify.") for a malformed track;
    // a malformed context silently becomes none.
    explicit SpotifyPlaybackSelection(const QString& trackURI,
                                      const std::optional<QString>& contextURI = std::nullopt);

    static bool isTrackURI(const QString& uri);
    static bool isContextURI(const QString& uri);

    QString trackURI;
    std::optional<QString> contextURI;
    std::optional<QString> title;
    std::optional<QString> artist;
    QStringList following;
    std::optional<QString> album;
};

} // namespace MirlPlayer
