#include "panel/RoundedArtwork.h"

#include <QPainter>
#include <QQmlEngine>
#include <QQuickImageProvider>
#include <QUrl>

namespace MirlPlayer {

namespace {
// The size a cover is asked for: three times the largest art square, sharp on any screen.
constexpr int coverPixels = 360;
} // namespace

RoundedArtwork::RoundedArtwork(QQuickItem* parent)
    : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    setAcceptedMouseButtons(Qt::NoButton);
    connect(this, &QQuickItem::widthChanged, this, [this] { update(); });
    connect(this, &QQuickItem::heightChanged, this, [this] { update(); });
}

void RoundedArtwork::setSource(const QString& source) {
    if (source == m_source)
        return;
    m_source = source;
    m_image = load(source);
    Q_EMIT sourceChanged();
    update();
}

void RoundedArtwork::setCorner(double corner) {
    if (corner == m_corner)
        return;
    m_corner = corner;
    Q_EMIT cornerChanged();
    update();
}

QImage RoundedArtwork::load(const QString& source) const {
    const QUrl url(source);
    if (source.isEmpty() || !url.isValid())
        return {};
    if (url.scheme() == QLatin1String("image")) {
        QQmlEngine* engine = qmlEngine(this);
        auto* provider = engine
                             ? dynamic_cast<QQuickImageProvider*>(engine->imageProvider(url.host()))
                             : nullptr;
        if (!provider || provider->imageType() != QQmlImageProviderBase::Image)
            return {};
        QSize size;
        return provider->requestImage(url.path().mid(1), &size, QSize(coverPixels, coverPixels));
    }
    return QImage(url.isLocalFile() ? url.toLocalFile() : source);
}

void RoundedArtwork::paint(QPainter* painter) {
    if (m_image.isNull() || width() <= 0 || height() <= 0)
        return;
    const QRectF target(0, 0, width(), height());
    // Cropped to the square's aspect, centred, as an image filling it would be.
    const QSizeF cover =
        QSizeF(m_image.size()).scaled(target.size(), Qt::KeepAspectRatioByExpanding);
    const double scale = m_image.width() / cover.width();
    const QRectF from((cover.width() - target.width()) * 0.5 * scale,
                      (cover.height() - target.height()) * 0.5 * scale, target.width() * scale,
                      target.height() * scale);
    // Scaled once to the texture's pixels (smoothly, as the image element would), then laid
    // into the rounded square as its brush, so the edge is smooth too.
    const QSize pixels = textureSize().isValid() ? textureSize() : target.size().toSize();
    const QImage scaled = m_image.copy(from.toAlignedRect())
                              .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QBrush brush(scaled);
    brush.setTransform(
        QTransform::fromScale(target.width() / scaled.width(), target.height() / scaled.height()));
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(brush);
    painter->drawRoundedRect(target, m_corner, m_corner);
}

} // namespace MirlPlayer
