// Pictures of the surface's looks for the demo: the open card on each backdrop form and in each
// control style, drawn by the real surface over a colourful wallpaper (so that the glass shows
// what lies behind it) with a still track and a still spectrum. Needs a display; the demo runs
// it on its virtual screen. Writes backdrop-<form>.png, controls-<style>.png and library-bar.png.
#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/Skin.h"
#include "look/Theme.h"
#include "panel/PanelView.h"
#include "panel/StillPanel.h"
#include "playback/PlayerState.h"

#include <QDir>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPainter>
#include <QQmlEngine>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTimer>
#include <cmath>

using namespace MirlPlayer;

namespace {

// A cover with a strong diagonal, so that its rounded corners show.
QImage cover() {
    QImage image(360, 360, QImage::Format_ARGB32);
    QPainter p(&image);
    QLinearGradient g(0, 0, 360, 360);
    g.setColorAt(0, QColor(255, 94, 58));
    g.setColorAt(0.5, QColor(180, 40, 160));
    g.setColorAt(1, QColor(30, 60, 200));
    p.fillRect(image.rect(), g);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 230, 120));
    p.drawEllipse(QPointF(120, 140), 70, 70);
    return image;
}

// What lies behind the panel: bright shapes that the glass lets through.
QImage wallpaper(QSize size) {
    QImage image(size, QImage::Format_ARGB32);
    QPainter p(&image);
    QLinearGradient g(0, 0, size.width(), size.height());
    g.setColorAt(0, QColor(40, 120, 200));
    g.setColorAt(1, QColor(230, 120, 60));
    p.fillRect(image.rect(), g);
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 9; ++i) {
        p.setBrush(QColor::fromHsvF(i / 9.0, 0.7, 1.0));
        p.drawEllipse(QPointF(60 + i * 90, 40 + (i % 3) * 70), 50, 50);
    }
    return image;
}

// A spectrum with a strong middle, as music gives, moving a little from frame to frame.
QList<double> spectrum(int frame) {
    QList<double> levels;
    for (int i = 0; i < 128; ++i)
        levels.append(0.25 + 0.7 * std::pow(std::sin(i / 127.0 * 3.1), 2) *
                                 (0.6 + 0.4 * std::cos(i * 0.9 + frame * 0.05)));
    return levels;
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const QDir out(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("."));
    QTemporaryDir home;
    Preferences prefs(home.filePath(QStringLiteral("preferences.conf")));
    ManualClock clock;
    Theme theme(prefs, clock);
    PlayerState player(nullptr);
    player.publishTitle(QStringLiteral("Harbour Lights"));
    player.publishArtist(QStringLiteral("The Tidewater Band"));
    player.publishDuration(214);
    player.publishPlaying(true);
    player.publishSourceName(QStringLiteral("Spotify"));
    player.clock()->setPosition(83);

    registerSurfaceTypes();
    StillPanel panel;
    QQuickView view;
    auto* artwork = new ArtworkImageProvider;
    artwork->setImage(cover());
    view.engine()->addImageProvider(QStringLiteral("artwork"), artwork);
    view.setColor(Qt::transparent);
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.setInitialProperties({{QStringLiteral("player"), QVariant::fromValue(&player)},
                               {QStringLiteral("panel"), QVariant::fromValue(&panel)},
                               {QStringLiteral("theme"), QVariant::fromValue(&theme)}});
    view.resize(640, 220);
    view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Panel/PanelSurface.qml")));
    if (view.status() != QQuickView::Ready) {
        for (const auto& e : view.errors())
            qWarning().noquote() << e.toString();
        return 1;
    }
    view.show();
    panel.setArtworkSource(QStringLiteral("image://artwork/1"));
    panel.setShape(true, QRectF(30, 26, 580, 168));

    auto shoot = [&](const QString& name) {
        // Let the card settle and the light build up over a few deliveries of the levels.
        for (int i = 0; i < 30; ++i) {
            player.eqStore()->setLevels(spectrum(i));
            QEventLoop wait;
            QTimer::singleShot(33, &wait, &QEventLoop::quit);
            wait.exec();
        }
        QImage shot = wallpaper(view.size() * view.devicePixelRatio());
        QPainter p(&shot);
        p.drawImage(0, 0, view.grabWindow());
        p.end();
        const QString path = out.filePath(name);
        if (!shot.save(path))
            qWarning() << "cannot write" << path;
    };

    theme.setShowVisualizer(true);
    theme.setStyleID(QStringLiteral("apple"));
    for (PlayerBackground form :
         {PlayerBackground::solid, PlayerBackground::frosted, PlayerBackground::liquid}) {
        // The liquid form is drawn as it is where the platform has a glass material.
        panel.setGlassAvailable(form == PlayerBackground::liquid);
        theme.setBackgroundStyleID(rawValue(form));
        shoot(QStringLiteral("backdrop-%1.png").arg(rawValue(form)));
    }
    panel.setGlassAvailable(false);
    theme.setBackgroundStyleID(QStringLiteral("frosted"));
    for (PlayerStyle style : allPlayerStyles()) {
        theme.setStyleID(rawValue(style));
        shoot(QStringLiteral("controls-%1.png").arg(rawValue(style)));
    }
    // The library's header bar: the same pieces, small, along the top of the widened shape.
    theme.setStyleID(QStringLiteral("apple"));
    view.resize(700, 520);
    panel.setShape(true, QRectF(30, 26, 640, 460), true);
    shoot(QStringLiteral("library-bar.png"));
    return 0;
}
