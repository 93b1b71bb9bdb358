#pragma once

#include "spotify/SpotifyItem.h"

#include <QList>
#include <QString>

namespace MirlPlayer {

// The containment test of the list filter: case- and diacritic-insensitive, so "beyonce" finds
// "Beyoncé" and "STRASSE" finds "Straße". Names are folded once per list, so a keystroke over
// thousands of songs is a plain substring search.
class LibraryFilter {
public:
    // Lower case, compatibility-decomposed, without combining marks.
    static QString fold(const QString& text);

    // The rows of the items whose name contains `text` (already trimmed). Keeps the folded names
    // of the last list it saw; a list with other data is folded anew.
    QList<int> matching(const QList<SpotifyItem>& items, const QString& text);

private:
    QList<SpotifyItem> m_list; // shares the data of the list the keys belong to
    QStringList m_keys;
};

} // namespace MirlPlayer
