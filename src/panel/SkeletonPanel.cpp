#include "panel/SkeletonPanel.h"

#include "core/Environment.h"
#include "panel/PanelInputRegion.h"
#include "playback/PlayerState.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMutexLocker>
#include <QQmlEngine>
#include <QQuickView>
#include <QScreen>
#include <cmath>

Q_LOGGING_CATEGORY(lcSkeletonPanel, "mirl.panel")

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

SkeletonPanel::SkeletonPanel(PlayerState& player, QObject* parent)
    : QObject(parent)
    , m_player(player)
    , m_forcedOpen(expandForced()) {
    m_pointerTimer.setInterval(pointerInterval);
    connect(&m_pointerTimer, &QTimer::timeout, this, &SkeletonPanel::readPointer);
    connect(&m_player, &PlayerState::artworkChanged, this, &SkeletonPanel::updateArtwork);
    m_expanded = m_forcedOpen;
}

SkeletonPanel::~SkeletonPanel() = default;

bool SkeletonPanel::show(QScreen* screen) {
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return false;
    const QRect frame = screen->geometry();
    m_geometry.screenWidth = frame.width();
    Q_EMIT geometryChanged();

    m_view = std::make_unique<QQuickView>();
    m_artwork = new ArtworkImageProvider;
    m_view->engine()->addImageProvider(QStringLiteral("artwork"), m_artwork);
    m_view->setFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::Tool |
                     Qt::WindowDoesNotAcceptFocus);
    m_view->setColor(Qt::transparent);
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->setScreen(screen);
    m_view->setGeometry(frame.x(), frame.y(), frame.width(),
                        int(std::ceil(m_geometry.windowHeight())));
    m_view->setInitialProperties({{QStringLiteral("player"), QVariant::fromValue(&m_player)},
                                  {QStringLiteral("panel"), QVariant::fromValue(this)}});
    m_view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Panel/SkeletonPanel.qml")));
    if (m_view->status() != QQuickView::Ready) {
        for (const auto& error : m_view->errors())
            qCWarning(lcSkeletonPanel) << error.toString();
        return false;
    }
    updateArtwork();
    m_view->show();
    updateInputRegion();
    m_pointerTimer.start();
    return true;
}

void SkeletonPanel::readPointer() {
    if (!m_view)
        return;
    pointerAt(QPointF(QCursor::pos(m_view->screen()) - m_view->position()));
}

void SkeletonPanel::pointerAt(const QPointF& point) {
    if (m_forcedOpen)
        return;
    setExpanded(m_geometry.nextExpanded(m_expanded, point));
}

void SkeletonPanel::setExpanded(bool expanded) {
    if (m_expanded == expanded)
        return;
    m_expanded = expanded;
    updateInputRegion();
    Q_EMIT expandedChanged();
}

void SkeletonPanel::updateInputRegion() {
    if (m_view && m_view->isVisible())
        setInputRegion(*m_view, m_geometry.hitRect(m_expanded).toAlignedRect());
}

void SkeletonPanel::updateArtwork() {
    if (m_artwork)
        m_artwork->setImage(m_player.artwork());
    const QString source = m_player.hasArtwork()
                               ? QStringLiteral("image://artwork/%1").arg(++m_artworkGeneration)
                               : QString();
    if (source == m_artworkSource)
        return;
    m_artworkSource = source;
    Q_EMIT artworkSourceChanged();
}

QString SkeletonPanel::formatTime(double seconds) {
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
