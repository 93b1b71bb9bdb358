#include "panel/PanelView.h"

#include "look/PlayerBackdrop.h"
#include "panel/ArtSlot.h"
#include "panel/ControlStyleModel.h"
#include "panel/GlassFill.h"
#include "panel/NowPlayingArtists.h"
#include "panel/ReflectionView.h"
#include "panel/RoundedArtwork.h"
#include "panel/SurfaceGeometry.h"
#include "panel/SurfaceSlots.h"
#include "panel/TimelineModel.h"
#include "visualizers/views/VisualizerTypes.h"

#include <QQmlEngine>

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

void registerSurfaceTypes() {
    static const bool once = [] {
        registerVisualizerTypes(); // the surface shows the visualizers
        const char* uri = "MirlPlayer.Surface";
        qmlRegisterType<SurfaceSlots>(uri, 1, 0, "SurfaceSlots");
        qmlRegisterType<TimelineModel>(uri, 1, 0, "TimelineModel");
        qmlRegisterType<ArtSlot>(uri, 1, 0, "ArtSlot");
        qmlRegisterType<NowPlayingArtists>(uri, 1, 0, "NowPlayingArtists");
        qmlRegisterType<ControlStyleModel>(uri, 1, 0, "ControlStyleModel");
        qmlRegisterType<ReflectionView>(uri, 1, 0, "ReflectionView");
        qmlRegisterType<GlassFill>(uri, 1, 0, "GlassFill");
        qmlRegisterType<RoundedArtwork>(uri, 1, 0, "RoundedArtwork");
        qmlRegisterType<PlayerBackdrop>(uri, 1, 0, "BackdropRules");
        qmlRegisterSingletonType<SurfaceGeometry>(
            uri, 1, 0, "SurfaceGeometry",
            [](QQmlEngine*, QJSEngine*) -> QObject* { return new SurfaceGeometry; });
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace MirlPlayer
