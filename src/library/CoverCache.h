#pragma once

#include <QCache>
#include <QCoro/QCoroTask>
#include <QFuture>
#include <QImage>
#include <QMap>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPromise>
#include <QUrl>
#include <memory>
#include <optional>

namespace MirlPlayer {

// The one source of cover images for lists. A list of hundreds of rows asks for covers while it
// scrolls, so each address is fetched once and decoded once (off the GUI thread), the images stay
// in memory, and the answers stay on disk across restarts: Spotify's image addresses never change
// their content, so cached data always comes first. A failed cover is remembered nowhere; the next
// appearance of its row tries again.
class CoverCache : public QObject {
    Q_OBJECT
public:
    static constexpr int imageCountLimit = 600;
    static constexpr qint64 memoryCapacity = 16 * 1024 * 1024;
    static constexpr qint64 diskCapacity = 300 * 1024 * 1024;

    // `diskFolder` holds the HTTP cache; the shared instance uses "MIRL PRO/images" in the user's
    // cache folder.
    explicit CoverCache(const QString& diskFolder, QObject* parent = nullptr);
    ~CoverCache() override;

    static CoverCache& shared();
    static QString defaultFolder();

    // Waits out a failed first attempt; tests shorten it.
    void setRetryDelay(int ms) { m_retryDelayMs = ms; }

    // The decoded cover, or none when it cannot be had.
    QCoro::Task<std::optional<QImage>> coverImage(QUrl url);
    // The cover if it is in memory now.
    std::optional<QImage> cachedImage(const QUrl& url) const;

private:
    // One download that any number of rows wait for.
    struct Flight {
        QPromise<std::optional<QImage>> promise;
        QFuture<std::optional<QImage>> future = promise.future();
    };

    QCoro::Task<void> run(QUrl url, std::shared_ptr<Flight> flight);
    QCoro::Task<std::optional<QImage>> downloadCover(QUrl url);
    QCoro::Task<std::optional<QByteArray>> fetch(QUrl url);

    QCache<QUrl, QImage> m_cache{imageCountLimit};
    QCache<QUrl, QByteArray> m_bytes{memoryCapacity}; // the answers' memory layer, cost in bytes
    QNetworkAccessManager m_session;
    QMap<QUrl, std::shared_ptr<Flight>> m_inFlight;
    int m_retryDelayMs = 400;
};

} // namespace MirlPlayer
