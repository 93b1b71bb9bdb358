#include "library/SpotifyRoute.h"

#include "spotify/StoredJSON.h"

namespace MirlPlayer {

QJsonObject SpotifyRoute::toStored() const {
    QJsonObject o{{QStringLiteral("title"), title}, {QStringLiteral("path"), path}};
    if (wrapper)
        o.insert(u"wrapper", *wrapper);
    if (uri)
        o.insert(u"uri", *uri);
    if (kind)
        o.insert(u"kind", *kind);
    if (image)
        o.insert(u"image", image->toString());
    return o;
}

std::optional<SpotifyRoute> SpotifyRoute::fromStored(const QJsonObject& o) {
    SpotifyRoute route;
    if (!Stored::string(o, u"title", route.title) || !Stored::string(o, u"path", route.path) ||
        !Stored::optionalString(o, u"wrapper", route.wrapper) ||
        !Stored::optionalString(o, u"uri", route.uri) ||
        !Stored::optionalString(o, u"kind", route.kind) ||
        !Stored::optionalURL(o, u"image", route.image))
        return std::nullopt;
    return route;
}

QVariantMap SpotifyRoute::toVariant() const {
    return {{QStringLiteral("title"), title},
            {QStringLiteral("path"), path},
            {QStringLiteral("uri"), uri.value_or(QString())},
            {QStringLiteral("kind"), kind.value_or(QString())},
            {QStringLiteral("image"), image.value_or(QUrl())}};
}

} // namespace MirlPlayer
