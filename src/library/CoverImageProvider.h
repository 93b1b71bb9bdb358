#pragma once

#include <QQuickAsyncImageProvider>

namespace MirlPlayer {

class CoverCache;

// Covers for QML through the cover cache: `image://cover/` + the percent-encoded address. Every
// row that shows one address shares its one download and decode.
class CoverImageProvider : public QQuickAsyncImageProvider {
public:
    explicit CoverImageProvider(CoverCache& cache);
    QQuickImageResponse* requestImageResponse(const QString& id,
                                              const QSize& requestedSize) override;

private:
    CoverCache& m_cache;
};

} // namespace MirlPlayer
