#include "panel/NowPlayingArtists.h"

#include "spotify/SpotifyLibrary.h"

#include <QJsonArray>
#include <QPointer>

namespace MirlPlayer {

namespace {

constexpr QStringView trackPrefix = u"spotify:track:";

QVariantMap toMap(const SpotifyItem& item) {
    return {{QStringLiteral("name"), item.name},
            {QStringLiteral("uri"), item.uri},
            {QStringLiteral("kind"), item.kind}};
}

} // namespace

NowPlayingArtists::NowPlayingArtists(QObject* parent)
    : NowPlayingArtists(
          [](QString path) { return SpotifyLibrary::shared().getJSON(std::move(path)); },
          [] { return SpotifyLibrary::shared().connected(); }, parent) {}

NowPlayingArtists::NowPlayingArtists(Fetch fetch, std::function<bool()> signedIn, QObject* parent)
    : QObject(parent)
    , m_fetch(std::move(fetch))
    , m_signedIn(std::move(signedIn)) {}

void NowPlayingArtists::setTrackURI(const QString& uri) {
    const std::optional<QString> next = uri.isEmpty() ? std::nullopt : std::optional(uri);
    if (next == m_track)
        return;
    m_track = next;
    const bool hadCredits = !m_artists.isEmpty() || m_album;
    m_artists.clear();
    m_album.reset();
    Q_EMIT trackChanged();
    if (hadCredits)
        Q_EMIT creditsChanged();
    if (next && next->startsWith(trackPrefix) && m_signedIn && m_signedIn())
        resolve(*next);
}

QCoro::Task<void> NowPlayingArtists::resolve(QString uri) {
    QPointer<NowPlayingArtists> self(this);
    const QString id = uri.mid(trackPrefix.size());
    QJsonObject reply;
    try {
        reply = co_await m_fetch(QStringLiteral("tracks/") + id);
    } catch (...) {
        co_return; // a failed fetch leaves the plain text
    }
    if (!self || self->m_track != uri)
        co_return;
    QList<SpotifyItem> artists;
    for (const QJsonValue& v : reply.value(u"artists").toArray()) {
        if (auto item = itemFromJSON(v.toObject()))
            artists.append(*item);
    }
    std::optional<SpotifyItem> album = itemFromJSON(reply.value(u"album").toObject());
    if (artists.isEmpty() && !album)
        co_return;
    self->m_artists = std::move(artists);
    self->m_album = std::move(album);
    Q_EMIT self->creditsChanged();
}

QVariantList NowPlayingArtists::artistList() const {
    QVariantList out;
    for (const SpotifyItem& a : m_artists)
        out.append(toMap(a));
    return out;
}

QVariantMap NowPlayingArtists::albumMap() const {
    return m_album ? toMap(*m_album) : QVariantMap();
}

} // namespace MirlPlayer
