#include "spotify/SpotifyServiceOverride.h"

#include <QHostAddress>
#include <QUrl>

namespace MirlPlayer {

std::optional<SpotifyEndpoints> loopbackEndpoints(const QString& base,
                                                  const std::function<void(const QString&)>& log) {
    if (base.isEmpty())
        return std::nullopt;
    const QUrl url(base, QUrl::StrictMode);
    // A name could resolve anywhere; only an address literal is known to stay on this machine.
    const QHostAddress host(url.host());
    const bool web = url.scheme() == u"http" || url.scheme() == u"https";
    if (!url.isValid() || !web || url.userInfo().size() > 0 || host.isNull() ||
        !host.isLoopback()) {
        log(QStringLiteral("Spotify stand-in refused (not a loopback address): ") +
            url.toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery));
        return std::nullopt;
    }
    QUrl root = url.adjusted(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
    SpotifyEndpoints endpoints;
    endpoints.apiBase = root.resolved(QUrl(QStringLiteral("/v1/")));
    endpoints.authorize = root.resolved(QUrl(QStringLiteral("/authorize")));
    endpoints.token = root.resolved(QUrl(QStringLiteral("/api/token")));
    log(QStringLiteral("Spotify stand-in in use: ") + root.toString());
    return endpoints;
}

std::optional<SpotifyEndpoints>
endpointsFromEnvironment(const std::function<void(const QString&)>& log) {
    return loopbackEndpoints(qEnvironmentVariable(spotifyServiceVariable), log);
}

} // namespace MirlPlayer
