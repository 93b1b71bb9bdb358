// Starting a song through Spotify Connect, and what the Web API says plays afterwards.

#include "spotify/SpotifyLibrary.h"

namespace MirlPlayer {

namespace {

// Only letters and digits stay as they are: a track URI goes into a query of its own.
QString queryEncoded(const QString& text) {
    QString out;
    for (const char c : text.toUtf8()) {
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            out += QLatin1Char(c);
        else
            out += QStringLiteral("%%1").arg(uchar(c), 2, 16, QLatin1Char('0')).toUpper();
    }
    return out;
}

// The list a Connect play may name: an album, a playlist or the user's collection. An artist
// context is never sent; the song's album is the second choice.
std::optional<QString> connectContext(const std::optional<QString>& context,
                                      const std::optional<QString>& album) {
    if (context && (context->startsWith(u"spotify:album:") ||
                    context->startsWith(u"spotify:playlist:") || context->endsWith(u":collection")))
        return context;
    if (album && album->startsWith(u"spotify:album:"))
        return album;
    return std::nullopt;
}

} // namespace

QCoro::Task<SpotifyPlaybackStart>
SpotifyLibrary::startPlayback(QString trackURI, std::optional<QString> contextURI,
                              std::optional<QString> album,
                              std::optional<QString> currentTrackURI) {
    using Outcome = SpotifyPlaybackStart::Outcome;
    if (!connected() || !hasPlaybackScopes()) {
        log(QStringLiteral("Spotify Connect skipped: ") +
            (connected() ? QStringLiteral("missing permission (reconnect in Settings → Spotify)")
                         : QStringLiteral("not connected")));
        co_return SpotifyPlaybackStart{Outcome::unavailable, {}};
    }
    std::optional<QString> device;
    try {
        auto resolving = resolveThisMac(currentTrackURI);
        device = co_await std::move(resolving);
    } catch (const SpotifyError& error) {
        if (error.isCancellation())
            throw;
        log(QStringLiteral("Spotify Connect failed: ") + error.localizedDescription());
        co_return SpotifyPlaybackStart{Outcome::failed, error.localizedDescription()};
    }
    if (!device)
        co_return SpotifyPlaybackStart{Outcome::failed, noDeviceMessage};

    const QString deviceQuery = QStringLiteral("device_id=") + queryEncoded(*device);
    try {
        if (const auto context = connectContext(contextURI, album)) {
            const QJsonObject body{
                {QStringLiteral("context_uri"), *context},
                {QStringLiteral("offset"), QJsonObject{{QStringLiteral("uri"), trackURI}}}};
            auto playing = request(QStringLiteral("me/player/play?") + deviceQuery,
                                   QStringLiteral("PUT"), body);
            co_await std::move(playing);
            co_return SpotifyPlaybackStart{Outcome::started, {}};
        }
        auto queueing = request(QStringLiteral("me/player/queue?uri=") + queryEncoded(trackURI) +
                                    u'&' + deviceQuery,
                                QStringLiteral("POST"));
        co_await std::move(queueing);
        co_return SpotifyPlaybackStart{Outcome::queued, {}};
    } catch (const SpotifyError& error) {
        if (error.isCancellation())
            throw;
        log(QStringLiteral("Spotify Connect failed: ") + error.localizedDescription());
        co_return SpotifyPlaybackStart{Outcome::failed, error.localizedDescription()};
    }
}

QCoro::Task<bool> SpotifyLibrary::checkPlayback(QString uri) {
    QJsonObject player;
    try {
        auto asking = getJSON(QStringLiteral("me/player"));
        player = co_await std::move(asking);
    } catch (const SpotifyError& error) {
        if (error.isCancellation())
            throw;
        log(QStringLiteral("Spotify Connect check failed: ") + error.localizedDescription());
        co_return false;
    }
    if (player.isEmpty()) {
        log(QStringLiteral("Spotify Connect check: nothing is playing according to Spotify"));
        co_return false;
    }
    const QJsonObject device = player.value(u"device").toObject();
    const QJsonValue itemURI = player.value(u"item").toObject().value(u"uri");
    const QJsonValue deviceName = device.value(u"name");
    const QString known = m_thisMacDeviceID.value_or(QString());
    log(QStringLiteral("Spotify Connect check: Spotify reports ") +
        (itemURI.isString() ? itemURI.toString() : QStringLiteral("nothing")) + u' ' +
        (player.value(u"is_playing").toBool() ? QStringLiteral("playing")
                                              : QStringLiteral("paused")) +
        QStringLiteral(" on “") +
        (deviceName.isString() ? deviceName.toString() : QStringLiteral("?")) +
        QStringLiteral("” (expected this computer, id ") +
        (known.isEmpty() ? QStringLiteral("?") : known.left(6)) + u')');
    // Whether it plays or is paused takes no part: the read-back of the client decides that.
    co_return itemURI.isString() && itemURI.toString() == uri && !known.isEmpty() &&
        device.value(u"id").toString() == known;
}

} // namespace MirlPlayer
