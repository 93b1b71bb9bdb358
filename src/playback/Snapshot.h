#pragma once

#include <QString>
#include <optional>

namespace MirlPlayer {

// The players the program follows. Raw values are the names shown in PlayerState.sourceName.
enum class Source { none, spotify, music };

inline QString sourceRawValue(Source source) {
    switch (source) {
    case Source::spotify:
        return QStringLiteral("Spotify");
    case Source::music:
        return QStringLiteral("Music");
    case Source::none:
        break;
    }
    return QStringLiteral("none");
}

// Application name → source; anything unknown is none.
inline Source sourceFromRawValue(const QString& raw) {
    if (raw == u"Spotify")
        return Source::spotify;
    if (raw == u"Music")
        return Source::music;
    return Source::none;
}

// One sampled state of one player. Sampling never fails: every failure is the empty snapshot of
// the source asked for (both flags false, empty strings, zero numbers, no optionals).
struct Snapshot {
    Source source = Source::none;
    bool playing = false;
    bool hasTrack = false;
    QString title;
    QString artist;
    QString album;
    double durationMs = 0;
    double positionMs = 0;
    std::optional<QString> artURL;
    std::optional<QString> trackURI;

    static Snapshot empty(Source source) {
        Snapshot s;
        s.source = source;
        return s;
    }
    bool operator==(const Snapshot&) const = default;
};

} // namespace MirlPlayer
