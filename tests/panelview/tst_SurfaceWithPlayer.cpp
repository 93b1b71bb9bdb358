// The player surface on a private X server (Xvfb) against real mpv in the private test
// environment: its controls command the player (read back over MPRIS), the artwork's corners are
// clipped round, and a screen reader finds the transport by name.

#include "core/Preferences.h"
#include "look/Theme.h"
#include "mpris/PlayerCalls.h"
#include "panel/PanelView.h"
#include "panel/StillPanel.h"
#include "panel/X11TestMain.h"
#include "platform/linux/mpris/MprisPlayerBridge.h"
#include "playback/PlayerState.h"
#include "support/TestEnv.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;
using namespace MirlTest;

namespace {
const QString mpv = QStringLiteral("org.mpris.MediaPlayer2.mpv");
QDBusConnection bus() {
    return QDBusConnection::sessionBus();
}
} // namespace

class tst_SurfaceWithPlayer : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<MprisPlayerBridge> m_bridge;
    std::unique_ptr<PlayerState> m_player;
    std::unique_ptr<Theme> m_theme;
    StillPanel m_panel;
    QQuickView m_view;
    ManualClock m_clock;

    QQuickItem* item(const char* name) {
        return m_view.rootObject()->findChild<QQuickItem*>(QString::fromLatin1(name));
    }
    void click(QQuickItem* target, QPointF at) {
        QTest::mouseClick(&m_view, Qt::LeftButton, {}, target->mapToScene(at).toPoint());
    }
    void clickCentre(QQuickItem* target) {
        click(target, QPointF(target->width() / 2, target->height() / 2));
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(useTestEnv(), "no test environment: run under ctest");
        QTRY_VERIFY(!statusOf(bus(), mpv).isEmpty());
        if (statusOf(bus(), mpv) != u"Playing")
            callPlayer(bus(), mpv, QStringLiteral("Play"));
        m_prefs = std::make_unique<Preferences>(m_dir.filePath(QStringLiteral("prefs.conf")));
        m_bridge = std::make_unique<MprisPlayerBridge>(*m_prefs);
        m_player = std::make_unique<PlayerState>(m_bridge.get());
        m_theme = std::make_unique<Theme>(*m_prefs, m_clock);
        m_theme->setShowVisualizer(true);
        m_player->start();

        registerSurfaceTypes();
        auto* artwork = new ArtworkImageProvider;
        QImage cover(360, 360, QImage::Format_ARGB32);
        cover.fill(Qt::red);
        artwork->setImage(cover);
        m_view.engine()->addImageProvider(QStringLiteral("artwork"), artwork);
        m_view.setInitialProperties({{"player", QVariant::fromValue(m_player.get())},
                                     {"panel", QVariant::fromValue(&m_panel)},
                                     {"theme", QVariant::fromValue(m_theme.get())}});
        m_view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Panel/PanelSurface.qml")));
        QVERIFY2(m_view.status() == QQuickView::Ready,
                 qPrintable(m_view.errors().value(0).toString()));
        m_view.resize(640, 220);
        m_view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_view));
        m_panel.setArtworkSource(QStringLiteral("image://artwork/1"));
        m_panel.setShape(true, QRectF(30, 26, 580, 168));
        QTRY_VERIFY_WITH_TIMEOUT(m_player->isPlaying() && m_player->duration() > 0, 10000);
        QTRY_COMPARE(item("artSlot")->width(), 120.0); // the pieces have glided into place
    }

    void playPauseCommandsThePlayer() {
        QQuickItem* button = item("playPauseButton");
        clickCentre(button);
        QTRY_COMPARE_WITH_TIMEOUT(statusOf(bus(), mpv), QStringLiteral("Paused"), 5000);
        QTRY_VERIFY(!m_player->isPlaying());
        clickCentre(button);
        QTRY_COMPARE_WITH_TIMEOUT(statusOf(bus(), mpv), QStringLiteral("Playing"), 5000);
    }

    void nextCommandsThePlayer() {
        const QString before = titleOf(bus(), mpv);
        clickCentre(item("nextButton"));
        QTRY_VERIFY_WITH_TIMEOUT(titleOf(bus(), mpv) != before, 5000);
        QTRY_COMPARE_WITH_TIMEOUT(m_player->title(), titleOf(bus(), mpv), 5000);
    }

    void theTimelineSeeksOnRelease() {
        QQuickItem* timeline = item("timelineSlot");
        QTRY_VERIFY(m_player->duration() > 4);
        const double target = 0.75 * m_player->duration();
        click(timeline, QPointF(0.75 * timeline->width(), timeline->height() / 2));
        QTRY_VERIFY_WITH_TIMEOUT(std::abs(positionOf(bus(), mpv) - target) < 1.5, 5000);
    }

    void theArtworkHasRoundCorners() {
        QQuickItem* art = item("artwork");
        QTRY_VERIFY(item("roundedArtwork")->isVisible());
        auto grab = art->grabToImage();
        QVERIFY(grab);
        QTRY_VERIFY(!grab->image().isNull());
        const QImage image = grab->image().convertToFormat(QImage::Format_ARGB32);
        const int w = image.width() - 1, h = image.height() - 1;
        for (QPoint corner : {QPoint(0, 0), QPoint(w, 0), QPoint(0, h), QPoint(w, h)})
            QCOMPARE(qAlpha(image.pixel(corner)), 0);
        QCOMPARE(QColor(image.pixel(w / 2, h / 2)), QColor(Qt::red));
        QCOMPARE(QColor(image.pixel(w / 2, 0)), QColor(Qt::red)); // the edge itself is kept
    }

    void aScreenReaderFindsTheTransport() {
        QAccessible::setActive(true);
        QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&m_view);
        QVERIFY(window);
        QHash<QString, QAccessible::Role> found;
        std::function<void(QAccessibleInterface*)> walk = [&](QAccessibleInterface* node) {
            if (!node->state().invisible)
                found.insert(node->text(QAccessible::Name), node->role());
            for (int i = 0; i < node->childCount(); ++i)
                if (QAccessibleInterface* child = node->child(i))
                    walk(child);
        };
        walk(window);
        const QString playing =
            m_player->isPlaying() ? QStringLiteral("Pause") : QStringLiteral("Play");
        for (const QString& name :
             {QStringLiteral("Previous track"), playing, QStringLiteral("Next track")})
            QVERIFY2(found.value(name) == QAccessible::Button, qPrintable(name));
        QCOMPARE(found.value(QStringLiteral("Playback position")), QAccessible::Slider);
        // mpv is no Spotify client, so it stands in the "Music" place: the art opens the player.
        QCOMPARE(m_player->sourceName(), QStringLiteral("Music"));
        QCOMPARE(found.value(QStringLiteral("Open the music player")), QAccessible::Button);
    }
};

// The bus is the test environment's, where mpv plays.
int main(int argc, char** argv) {
    return MirlPlayer::Test::runOnPrivateX<tst_SurfaceWithPlayer>(
        argc, argv, MirlPlayer::Test::X11TestSession::Bus::inherited);
}

#include "tst_SurfaceWithPlayer.moc"
