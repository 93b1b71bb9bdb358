#pragma once

#include <QJsonObject>
#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <optional>

namespace MirlPlayer {

// One step of library navigation, and the key of the list caches by `path`. Stored in the library
// memory under these field names.
struct SpotifyRoute {
    QString title;
    QString path;                   // Web API path and query
    std::optional<QString> wrapper; // key of the JSON object that holds the page (search answers)
    std::optional<QString> uri;
    std::optional<QString> kind;
    std::optional<QUrl> image;

    bool operator==(const SpotifyRoute&) const = default;

    QJsonObject toStored() const;
    // Fails on a missing or mistyped key; the whole document that holds it goes with it.
    static std::optional<SpotifyRoute> fromStored(const QJsonObject& object);
    // The route as QML sees it.
    QVariantMap toVariant() const;
};

} // namespace MirlPlayer
