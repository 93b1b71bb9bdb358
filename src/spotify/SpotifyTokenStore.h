#pragma once

#include <QMap>
#include <QString>

namespace MirlPlayer {

// The sign-in file: one JSON object that maps a client ID to its refresh token, in the private
// support folder. Nothing else of the account is kept on disk.
class SpotifyTokenStore {
public:
    static inline const QString fileName = QStringLiteral("com.kestrova.mirlpro.spotify.json");

    // The folder "MIRL PRO" in the user's data folder, and the sign-in file in it.
    static QString privateSupportFolder();
    static QString filePath();

    // The stored map; a missing, unreadable or malformed file gives an empty one.
    static QMap<QString, QString> read();
    // Writes the map and trusts only what can be read back.
    static bool save(const QMap<QString, QString>& map);
    // The refresh token of `clientID` replaces the old one, the others stay.
    static bool store(const QString& clientID, const QString& refreshToken);
    static void remove();
};

} // namespace MirlPlayer
