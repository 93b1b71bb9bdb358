#include "library/CoverCache.h"

#include "core/PrivateFile.h"
#include "library/SpotifyMemory.h"

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroNetworkReply>
#include <QCoro/QCoroTimer>
#include <QNetworkDiskCache>
#include <QNetworkReply>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>
#include <chrono>

namespace MirlPlayer {

namespace {

// Runs on the thread pool: a big JPEG would otherwise stall the scrolling list.
QImage decode(const QByteArray& bytes) {
    QImage image;
    image.loadFromData(bytes);
    return image;
}

} // namespace

CoverCache::CoverCache(const QString& diskFolder, QObject* parent)
    : QObject(parent) {
    // The covers say what the user listens to: their folders are as private as the library's
    // memory beside them, which the disk cache would otherwise create readable by all.
    ensurePrivateDir(diskFolder);
    auto* disk = new QNetworkDiskCache(&m_session);
    disk->setCacheDirectory(diskFolder);
    disk->setMaximumCacheSize(diskCapacity);
    m_session.setCache(disk);
}

CoverCache::~CoverCache() = default;

CoverCache& CoverCache::shared() {
    static CoverCache* cache = new CoverCache(defaultFolder());
    return *cache;
}

QString CoverCache::defaultFolder() {
    return SpotifyMemory::cachesFolder() + QStringLiteral("/images");
}

std::optional<QImage> CoverCache::cachedImage(const QUrl& url) const {
    if (const QImage* image = m_cache.object(url))
        return *image;
    return std::nullopt;
}

QCoro::Task<std::optional<QImage>> CoverCache::coverImage(QUrl url) {
    if (auto image = cachedImage(url))
        co_return image;
    std::shared_ptr<Flight> flight = m_inFlight.value(url);
    if (!flight) {
        flight = std::make_shared<Flight>();
        flight->promise.start();
        m_inFlight.insert(url, flight);
        run(url, flight);
    }
    QPointer<CoverCache> self(this);
    QFuture<std::optional<QImage>> future = flight->future;
    co_await future;
    if (!self || future.resultCount() == 0)
        co_return std::nullopt;
    // Another caller may have put it there first.
    if (auto image = cachedImage(url))
        co_return image;
    co_return future.result();
}

QCoro::Task<void> CoverCache::run(QUrl url, std::shared_ptr<Flight> flight) {
    QPointer<CoverCache> self(this);
    std::optional<QImage> image;
    try {
        image = co_await downloadCover(url);
    } catch (...) {
        // A failure is no cover, and is not remembered.
    }
    if (self) {
        if (image)
            m_cache.insert(url, new QImage(*image));
        m_inFlight.remove(url);
    }
    flight->promise.addResult(image);
    flight->promise.finish();
}

QCoro::Task<std::optional<QImage>> CoverCache::downloadCover(QUrl url) {
    QPointer<CoverCache> self(this);
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (attempt > 0) {
            co_await QCoro::sleepFor(std::chrono::milliseconds(m_retryDelayMs));
            if (!self)
                co_return std::nullopt;
        }
        const std::optional<QByteArray> bytes = co_await fetch(url);
        if (!self)
            co_return std::nullopt;
        if (!bytes)
            continue;
        const QImage image = co_await QtConcurrent::run(decode, *bytes);
        if (!self)
            co_return std::nullopt;
        if (!image.isNull()) {
            m_bytes.insert(url, new QByteArray(*bytes), bytes->size());
            co_return image;
        }
        // Spoilt data must not come back from the caches on the next attempt.
        m_bytes.remove(url);
        m_session.cache()->remove(url);
    }
    co_return std::nullopt;
}

QCoro::Task<std::optional<QByteArray>> CoverCache::fetch(QUrl url) {
    if (const QByteArray* bytes = m_bytes.object(url))
        co_return *bytes;
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::PreferCache);
    request.setTransferTimeout(25'000);
    QNetworkReply* reply = m_session.get(request);
    co_await qCoro(reply).waitForFinished();
    reply->deleteLater();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError || status < 200 || status > 299)
        co_return std::nullopt;
    co_return reply->readAll();
}

} // namespace MirlPlayer
