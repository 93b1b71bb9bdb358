#pragma once

#include "spotify/SpotifyItem.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <optional>

namespace MirlPlayer {

// One entry of the library's sidebar: a built-in list or something the user pinned there.
struct LibraryShortcut {
    QString id; // the Spotify URI; the name for a built-in
    QString name;
    QString kind; // "builtin", "playlist", "album" or "artist"
    std::optional<QUrl> image;

    bool operator==(const LibraryShortcut&) const = default;
    QVariantMap toVariant() const;
    static LibraryShortcut fromItem(const SpotifyItem& item);
};

// The sidebar and the search history as their stored JSON values, and the list rules.
namespace LibraryShortcuts {

inline const QString shortcutsKey = QStringLiteral("spotifyLibraryShortcuts");
inline const QString historyKey = QStringLiteral("spotifySearchHistory");
constexpr int historyLimit = 10;

// "Playlists" and "Liked Songs".
QList<LibraryShortcut> defaultShortcuts();
bool isPinnable(const QString& kind);

QByteArray encode(const QList<LibraryShortcut>& list);
// The stored list (empty when missing or spoilt) with every missing default appended, so the
// built-ins can be moved but never lost.
QList<LibraryShortcut> load(const QByteArray& stored, const QList<LibraryShortcut>& defaults);
// Pinning and reordering alike: `shortcut` goes before `beforeID`, or to the end. False when
// nothing changes.
bool move(QList<LibraryShortcut>& list, const LibraryShortcut& shortcut,
          const std::optional<QString>& beforeID);

QByteArray encodeHistory(const QList<SpotifyItem>& items);
// At most the first ten; empty when missing or spoilt.
QList<SpotifyItem> loadHistory(const QByteArray& stored);
// `item` at the front, once, and at most ten in all.
void record(QList<SpotifyItem>& history, const SpotifyItem& item);

} // namespace LibraryShortcuts

} // namespace MirlPlayer
