#include "spotify/SpotifyTokenStore.h"

#include "core/PrivateFile.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace MirlPlayer {

namespace {

constexpr qint64 kMaxFileBytes = 1024 * 1024;

} // namespace

QString SpotifyTokenStore::privateSupportFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/MIRL PRO");
}

QString SpotifyTokenStore::filePath() {
    return privateSupportFolder() + u'/' + fileName;
}

QMap<QString, QString> SpotifyTokenStore::read() {
    QMap<QString, QString> map;
    const auto data = readFile(filePath(), kMaxFileBytes);
    if (!data)
        return map;
    const QJsonDocument doc = QJsonDocument::fromJson(*data);
    if (!doc.isObject())
        return map;
    const QJsonObject object = doc.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        // The file maps strings to strings; anything else spoils the whole file.
        if (!it.value().isString())
            return {};
        map.insert(it.key(), it.value().toString());
    }
    return map;
}

bool SpotifyTokenStore::save(const QMap<QString, QString>& map) {
    QJsonObject object;
    for (auto it = map.begin(); it != map.end(); ++it)
        object.insert(it.key(), it.value());
    const QByteArray encoded = QJsonDocument(object).toJson(QJsonDocument::Compact);
    writePrivateFile(filePath(), encoded);
    const auto back = readFile(filePath(), kMaxFileBytes);
    return back && *back == encoded;
}

bool SpotifyTokenStore::store(const QString& clientID, const QString& refreshToken) {
    QMap<QString, QString> map = read();
    map.insert(clientID, refreshToken);
    return save(map);
}

void SpotifyTokenStore::remove() {
    QFile::remove(filePath());
}

} // namespace MirlPlayer
