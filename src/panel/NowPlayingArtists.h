#pragma once

#include "spotify/SpotifyItem.h"

#include <QCoro/QCoroTask>
#include <QJsonObject>
#include <QObject>
#include <QVariantList>
#include <QVariantMap>
#include <functional>
#include <optional>

namespace MirlPlayer {

// The credited artists and the album of the current Spotify track, for links in the title block.
// Each new track empties them and, for a "spotify:track:" URI while signed in, asks the Web API
// for "tracks/<id>"; a reply for a track that is no longer current is dropped, and a failed one
// leaves plain text.
class NowPlayingArtists : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString trackURI READ trackURI WRITE setTrackURI NOTIFY trackChanged)
    Q_PROPERTY(QString track READ track NOTIFY trackChanged)
    Q_PROPERTY(QVariantList artists READ artistList NOTIFY creditsChanged)
    Q_PROPERTY(QVariantMap album READ albumMap NOTIFY creditsChanged)
public:
    using Fetch = std::function<QCoro::Task<QJsonObject>(QString path)>;

    // Without a fetch the shared Spotify library answers, when it is signed in.
    explicit NowPlayingArtists(QObject* parent = nullptr);
    NowPlayingArtists(Fetch fetch, std::function<bool()> signedIn, QObject* parent = nullptr);

    QString trackURI() const { return m_track.value_or(QString()); }
    void setTrackURI(const QString& uri);
    QString track() const { return trackURI(); }
    const QList<SpotifyItem>& artists() const { return m_artists; }
    const std::optional<SpotifyItem>& album() const { return m_album; }
    QVariantList artistList() const;
    QVariantMap albumMap() const;

Q_SIGNALS:
    void trackChanged();
    void creditsChanged();

private:
    QCoro::Task<void> resolve(QString uri);

    Fetch m_fetch;
    std::function<bool()> m_signedIn;
    std::optional<QString> m_track;
    QList<SpotifyItem> m_artists;
    std::optional<SpotifyItem> m_album;
};

} // namespace MirlPlayer
