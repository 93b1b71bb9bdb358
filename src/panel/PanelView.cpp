#include "panel/PanelView.h"

#include <cmath>

namespace MirlPlayer {

ArtworkImageProvider::ArtworkImageProvider()
    : QQuickImageProvider(QQuickImageProvider::Image) {}

void ArtworkImageProvider::setImage(const QImage& image) {
    QMutexLocker lock(&m_mutex);
    m_image = image;
}

QImage ArtworkImageProvider::requestImage(const QString&, QSize* size, const QSize& requestedSize) {
    QImage image;
    {
        QMutexLocker lock(&m_mutex);
        image = m_image;
    }
    if (!image.isNull() && requestedSize.isValid() && !requestedSize.isEmpty())
        image =
            image.scaled(requestedSize, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    if (size)
        *size = image.size();
    return image;
}

QString formatPlayTime(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0)
        seconds = 0;
    const auto total = qint64(std::floor(seconds));
    const qint64 hours = total / 3600;
    const qint64 minutes = (total / 60) % 60;
    const qint64 secs = total % 60;
    if (hours > 0)
        return QStringLiteral("%1:%2:%3")
            .arg(hours)
            .arg(minutes, 2, 10, QChar(u'0'))
            .arg(secs, 2, 10, QChar(u'0'));
    return QStringLiteral("%1:%2").arg(minutes).arg(secs, 2, 10, QChar(u'0'));
}

} // namespace MirlPlayer
