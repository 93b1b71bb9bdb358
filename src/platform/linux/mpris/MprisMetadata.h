#pragma once

#include "playback/Snapshot.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <optional>

// How MPRIS answers become snapshots, and which bus name plays which part. Pure functions: the
// players' answers arrive as whatever D-Bus types a player chose to send, and every surprise
// reduces to an empty field, never to an error.
namespace MirlPlayer::Mpris {

inline constexpr QStringView namePrefix = u"org.mpris.MediaPlayer2.";
inline constexpr QStringView spotifyName = u"org.mpris.MediaPlayer2.spotify";

// Text longer than this is cut: a title is shown on one line and kept in the model, and nothing a
// player sends should be able to make the panel slow.
inline constexpr qsizetype maxTextLength = 1024;

// The snapshot of one player from the properties of org.mpris.MediaPlayer2.Player (GetAll):
// "Playing" plays, "Paused" has a track, anything else ("Stopped", missing, a wrong type) is the
// empty snapshot, and so is a "Paused" answer with no title and no real track id (what players
// give between tracks or with an empty playlist). Lengths and positions are microseconds; the
// snapshot holds milliseconds. The track URI is filled for Spotify only.
Snapshot snapshotFromPlayerProperties(const QVariantMap& properties, Source source);

// Spotify's track id in either of its forms, "/com/spotify/track/ID" or "spotify:track:ID", as
// "spotify:track:ID". Anything else (ads, local files, other players' ids) has none.
std::optional<QString> spotifyTrackURI(const QVariant& trackId);

// A player's metadata map, whether it arrived decoded or still marshalled; empty when it is not a
// string-to-variant map.
QVariantMap metadataMap(const QVariant& value);

// Text as the panel may show it: control characters become spaces, and it is cut to
// maxTextLength. Non-text values give an empty text.
QString cleanText(const QVariant& value);

// Microseconds as sent by a player (any integer or floating type) to milliseconds; none for a
// negative, non-finite or non-numeric value.
std::optional<double> readMicroseconds(const QVariant& value);
// The same with 0 for what cannot be read.
double microsecondsToMs(const QVariant& value);

// The track id MPRIS reserves for "no track".
inline constexpr QStringView noTrackId = u"/org/mpris/MediaPlayer2/TrackList/NoTrack";

// Splits every org.mpris.MediaPlayer2.* name on the bus into Spotify (`spotifyService` itself or
// one of its ".instance" names) and the others, in name order; the part "Music" is chosen among
// the others by MusicSlot.
struct PlayerNames {
    QString spotify;
    QStringList others;
};
PlayerNames splitPlayers(QStringList names, const QString& spotifyService);

// Whether `name` is `base` or one of its ".instance" names, in any case.
bool isNameOrInstance(const QString& name, const QString& base);

} // namespace MirlPlayer::Mpris
