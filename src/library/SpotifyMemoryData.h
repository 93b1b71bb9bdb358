#pragma once

#include "library/SpotifyRoute.h"
#include "spotify/SpotifyItem.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <optional>

namespace MirlPlayer {

// The records of the library memory file. Dates are wall-clock seconds since 1970 here and
// seconds since 2001-01-01 in the file.

// One browsed list, key = the route's path.
struct MemoryPage {
    QList<SpotifyItem> items;
    std::optional<QString> next;
    std::optional<qint64> total;
    std::optional<double> fetched;
};

// Where the user was in the library.
struct MemoryNavigation {
    QString tab;
    QString query;
    QString searchKind;
    QList<SpotifyRoute> routes;
    QString filter;
};

// One artist page.
struct MemoryArtistEntry {
    std::optional<SpotifyItem> artist;
    QList<SpotifyItem> popular;
    QList<SpotifyItem> releases;
    std::optional<QString> next;
    double fetched = 0;
};

// The whole file. The empty snapshot is what a missing or spoilt file gives.
struct MemorySnapshot {
    static inline const QString firstSavedPage = QStringLiteral("me/tracks?limit=50");

    QString owner;            // "spotify:user:<id>:collection"; "" before the first check
    QList<SpotifyItem> saved; // newest first
    std::optional<QString> savedNext = firstSavedPage;
    bool complete = false;
    QMap<QString, MemoryPage> pages;
    QMap<QString, QString> positions;
    std::optional<MemoryNavigation> navigation;
    std::optional<QMap<QString, MemoryArtistEntry>> artists;
};

// Seconds between 1970 and 2001, the epoch of the file's dates.
inline constexpr double kReferenceEpoch = 978307200.0;

QByteArray encodeMemory(const MemorySnapshot& snapshot);
// None for anything that is not a whole, well-typed snapshot.
std::optional<MemorySnapshot> decodeMemory(const QByteArray& bytes);

} // namespace MirlPlayer
