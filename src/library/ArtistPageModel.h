#pragma once

#include "library/SpotifyItemListModel.h"

#include <QCoro/QCoroTask>
#include <QMap>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace MirlPlayer {

class Clock;
class SpotifyBrowser;
class SpotifyLibrary;
class SpotifyMemory;

// The page of one artist: the artist, ten popular tracks, the discography under a filter, and the
// artist's songs in the user's own Liked Songs. It opens from the artists seen in this session,
// then from the library memory, and only then from the Web API; a remembered page older than a
// day is shown at once and refreshed silently behind it.
class ArtistPageModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString artistURI READ artistURI NOTIFY artistChanged)
    Q_PROPERTY(QVariantMap artist READ artistMap NOTIFY artistChanged)
    Q_PROPERTY(SpotifyItemListModel* popular READ popularModel CONSTANT)
    Q_PROPERTY(SpotifyItemListModel* releases READ releasesModel CONSTANT)
    Q_PROPERTY(SpotifyItemListModel* likedTracks READ likedModel CONSTANT)
    Q_PROPERTY(bool loadingLiked READ loadingLiked NOTIFY loadingLikedChanged)
    Q_PROPERTY(QString likedError READ likedError NOTIFY likedErrorChanged)
    Q_PROPERTY(bool loadingReleases READ loadingReleases NOTIFY loadingReleasesChanged)
    Q_PROPERTY(QString error READ errorText NOTIFY errorChanged)
    Q_PROPERTY(Releases filter READ filter WRITE setFilter NOTIFY filterChanged)
    Q_PROPERTY(bool hasMoreReleases READ hasMoreReleases NOTIFY releasesChanged)

public:
    enum class Releases { All, Albums, Singles };
    Q_ENUM(Releases)

    static constexpr double staleAfter = 86400.0;

    struct Visit {
        std::optional<SpotifyItem> artist;
        QList<SpotifyItem> popular;
        QList<SpotifyItem> releases;
        std::optional<QString> next;
    };

    // The shared library, memory and browser.
    explicit ArtistPageModel(QObject* parent = nullptr);
    ArtistPageModel(SpotifyLibrary& library, SpotifyMemory& memory, SpotifyBrowser& browser,
                    Clock& clock, QObject* parent = nullptr);

    static QString label(Releases filter);
    static QString includeGroups(Releases filter);

    QString artistURI() const { return m_artistURI; }
    const std::optional<SpotifyItem>& artist() const { return m_artist; }
    QVariantMap artistMap() const;
    const QList<SpotifyItem>& popular() const { return m_popular; }
    const QList<SpotifyItem>& releases() const { return m_releases; }
    SpotifyItemListModel* popularModel() { return &m_popularModel; }
    SpotifyItemListModel* releasesModel() { return &m_releasesModel; }
    SpotifyItemListModel* likedModel() { return &m_likedModel; }
    bool loadingLiked() const { return m_loadingLiked; }
    QString likedError() const { return m_likedError.value_or(QString()); }
    bool loadingReleases() const { return m_loadingReleases; }
    QString errorText() const { return m_error.value_or(QString()); }
    Releases filter() const { return m_filter; }
    bool hasMoreReleases() const { return m_nextReleases.has_value(); }

    Q_INVOKABLE void loadArtist(const QString& uri, const QString& name);
    Q_INVOKABLE void loadReleases(bool more);
    void setFilter(Releases filter);
    QList<SpotifyItem> likedTracksForArtist();
    // Starts the crawl of saved songs the liked section is computed from.
    Q_INVOKABLE void openLikedSection();

Q_SIGNALS:
    void artistChanged();
    void loadingLikedChanged();
    void likedErrorChanged();
    void loadingReleasesChanged();
    void errorChanged();
    void filterChanged();
    void releasesChanged();

private:
    static QString bareOf(const QString& uri);
    QCoro::Task<void> fetchArtist(QString name, int generation);
    QCoro::Task<void> refreshArtist(QString name, int generation);
    QCoro::Task<std::optional<SpotifyItem>> fetchArtistItem(QString id);
    QCoro::Task<QList<SpotifyItem>> fetchPopular(QString id, QString name);
    QCoro::Task<void> fetchReleases(QString address, int generation, Releases filter);
    void show(const QString& uri, const Visit& visit);
    void store();
    void publishLiked();
    void setError(std::optional<QString> value);
    void setLoadingReleases(bool value);
    void setReleases(const QList<SpotifyItem>& items);
    void setPopular(const QList<SpotifyItem>& items);

    SpotifyLibrary& m_library;
    SpotifyMemory& m_memory;
    SpotifyBrowser& m_browser;
    Clock& m_clock;

    QString m_artistURI;
    std::optional<SpotifyItem> m_artist;
    QList<SpotifyItem> m_popular;
    bool m_loadingLiked = false;
    std::optional<QString> m_likedError;
    QList<SpotifyItem> m_releases;
    bool m_loadingReleases = false;
    std::optional<QString> m_error;
    Releases m_filter = Releases::All;
    std::optional<QString> m_nextReleases;
    int m_generation = 0;
    QMap<QString, Visit> m_visited;

    SpotifyItemListModel m_popularModel;
    SpotifyItemListModel m_releasesModel;
    SpotifyItemListModel m_likedModel;
};

} // namespace MirlPlayer
