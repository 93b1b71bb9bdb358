#include "library/CoverImageProvider.h"

#include "library/CoverCache.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQuickTextureFactory>

namespace MirlPlayer {

namespace {

// Lives on the GUI thread, where the cache is, so the cache's answer can find it safely.
class CoverResponse : public QQuickImageResponse {
public:
    QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(m_image); // none for a failed cover
    }
    QString errorString() const override {
        return m_image.isNull() ? QStringLiteral("No cover") : QString();
    }
    void deliver(const std::optional<QImage>& image, const QSize& size) {
        if (image)
            m_image = size.isValid() && !size.isEmpty()
                          ? image->scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                          : *image;
        Q_EMIT finished();
    }

private:
    QImage m_image; // null for a failed cover: the view shows its placeholder
};

QCoro::Task<void> fetchInto(CoverCache* cache, QUrl url, QSize size,
                            QPointer<CoverResponse> response) {
    const std::optional<QImage> image = co_await cache->coverImage(url);
    if (response)
        response->deliver(image, size);
}

} // namespace

CoverImageProvider::CoverImageProvider(CoverCache& cache)
    : m_cache(cache) {}

QQuickImageResponse* CoverImageProvider::requestImageResponse(const QString& id,
                                                              const QSize& requestedSize) {
    auto* response = new CoverResponse;
    response->moveToThread(QCoreApplication::instance()->thread());
    const QUrl url = QUrl::fromPercentEncoding(id.toUtf8());
    QMetaObject::invokeMethod(
        &m_cache,
        [cache = &m_cache, url, requestedSize, response = QPointer<CoverResponse>(response)] {
            fetchInto(cache, url, requestedSize, response);
        },
        Qt::QueuedConnection);
    return response;
}

} // namespace MirlPlayer
