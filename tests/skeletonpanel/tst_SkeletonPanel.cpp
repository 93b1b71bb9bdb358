#include "panel/SkeletonPanel.h"
#include "playback/PlayerState.h"

#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>

using namespace MirlPlayer;

class tst_SkeletonPanel : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void pointerOpensAndClosesTheCard_data() {
        QTest::addColumn<bool>("expanded");
        QTest::addColumn<QPointF>("pointer");
        QTest::addColumn<bool>("after");
        // Screen 1512 wide: the pill is 66 x 24 at (723, 38), the card 248 x 336 at (632, 38).
        QTest::newRow("on the pill opens") << false << QPointF(756, 50) << true;
        QTest::newRow("just inside the trigger margin opens")
            << false << QPointF(723 - 13.5, 38 - 13.5) << true;
        QTest::newRow("beyond the trigger margin stays closed")
            << false << QPointF(723 - 14.5, 50) << false;
        QTest::newRow("where the card would be stays closed")
            << false << QPointF(756, 300) << false;
        QTest::newRow("on the open card stays open") << true << QPointF(756, 300) << true;
        QTest::newRow("just below the card stays open")
            << true << QPointF(756, 38 + 336 + 11) << true;
        QTest::newRow("travelling up to the screen edge stays open")
            << true << QPointF(640, 0) << true;
        QTest::newRow("beside the card closes") << true << QPointF(632 + 248 + 13, 100) << false;
        QTest::newRow("far below closes") << true << QPointF(756, 600) << false;
    }
    void pointerOpensAndClosesTheCard() {
        QFETCH(bool, expanded);
        QFETCH(QPointF, pointer);
        QFETCH(bool, after);
        SkeletonPanelGeometry geometry{1512};
        QCOMPARE(geometry.pillRect(), QRectF(723, 38, 66, 24));
        QCOMPARE(geometry.cardRect(), QRectF(632, 38, 248, 336));
        QCOMPARE(geometry.nextExpanded(expanded, pointer), after);
    }

    void clicksAreTakenOnlyByThePillOrTheOpenCard() {
        SkeletonPanelGeometry geometry{1920};
        QCOMPARE(geometry.hitRect(false), geometry.pillRect());
        QCOMPARE(geometry.hitRect(true), geometry.cardRect());
        QCOMPARE(geometry.windowHeight(), 32.0 + 6 + 460);
    }

    void timesReadAsMinutesAndSeconds_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("start") << 0.0 << "0:00";
        QTest::newRow("fractions round down") << 59.99 << "0:59";
        QTest::newRow("minutes") << 245.0 << "4:05";
        QTest::newRow("hours") << 3725.0 << "1:02:05";
        QTest::newRow("negative") << -3.0 << "0:00";
        QTest::newRow("not a number") << std::nan("") << "0:00";
    }
    void timesReadAsMinutesAndSeconds() {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(SkeletonPanel::formatTime(seconds), text);
    }

    void theViewShowsTheModelAndItsButtonsCommand() {
        PlayerState player(nullptr);
        SkeletonPanel panel(player);
        QVERIFY(panel.show());
        QQuickView* view = panel.window();
        QVERIFY(view->flags() & Qt::WindowStaysOnTopHint);
        QVERIFY(view->flags() & Qt::FramelessWindowHint);
        QCOMPARE(view->color(), QColor(Qt::transparent));
        QCOMPARE(view->width(), view->screen()->geometry().width());

        QSignalSpy expanded(&panel, &SkeletonPanel::expandedChanged);
        panel.pointerAt(panel.pillRect().center());
        QVERIFY(panel.expanded());
        QCOMPARE(expanded.size(), 1);
        panel.pointerAt(panel.pillRect().center()); // steady pointer: no news
        QCOMPARE(expanded.size(), 1);

        // The transport forwards to the model: with no player to command, the button flips at
        // once and nothing else happens.
        auto* play = view->rootObject()->findChild<QQuickItem*>(QStringLiteral("playPauseButton"));
        QVERIFY(play);
        QVERIFY(!player.isPlaying());
        QMetaObject::invokeMethod(play, "clicked");
        QVERIFY(player.isPlaying());

        // Artwork from the model reaches the view under a fresh address.
        QSignalSpy art(&panel, &SkeletonPanel::artworkSourceChanged);
        QImage cover(8, 8, QImage::Format_RGB32);
        cover.fill(Qt::red);
        player.publishArtwork(cover);
        QCOMPARE(art.size(), 1);
        QVERIFY(panel.artworkSource().startsWith(u"image://artwork/"));
        player.publishArtwork(QImage());
        QCOMPARE(panel.artworkSource(), QString());

        panel.pointerAt(QPointF(10, 900));
        QVERIFY(!panel.expanded());
    }
};

QTEST_MAIN(tst_SkeletonPanel)
#include "tst_SkeletonPanel.moc"
