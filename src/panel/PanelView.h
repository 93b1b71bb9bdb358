#pragma once

#include <QImage>
#include <QMutex>
#include <QQuickImageProvider>
#include <QString>

namespace MirlPlayer {

// The artwork of the current track for QML's Image, under "image://artwork/<n>"; n changes with
// every new picture so that the view reloads it.
class ArtworkImageProvider final : public QQuickImageProvider {
public:
    ArtworkImageProvider();
    void setImage(const QImage& image);
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    QMutex m_mutex; // the view may ask from its image loader thread
    QImage m_image;
};

// A play time as the timeline shows it: "m:ss", or "h:mm:ss" from an hour on. Anything that is
// not a finite, positive number reads as "0:00".
QString formatPlayTime(double seconds);

// Makes the surface's C++ view models known to QML under "MirlPlayer.Surface". Call before the
// surface is loaded; later calls do nothing.
void registerSurfaceTypes();

} // namespace MirlPlayer
