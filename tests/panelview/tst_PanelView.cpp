#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "panel/ArtSlot.h"
#include "panel/NowPlayingArtists.h"
#include "panel/PanelView.h"
#include "panel/StillPanel.h"
#include "panel/SurfaceGeometry.h"
#include "panel/SurfaceSlots.h"
#include "panel/TimelineModel.h"
#include "playback/PlayerState.h"
#include "visualizers/views/VisualizerTypes.h"

#include <QCoro/QCoroTimer>
#include <QJsonArray>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <map>

using namespace MirlPlayer;

class tst_PanelView : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    struct Surface {
        ManualClock clock;
        Preferences prefs;
        Theme theme{prefs, clock};
        PlayerState player{nullptr};
        StillPanel panel;
        QQuickView view;
        explicit Surface(const QString& path)
            : prefs(path) {}
        bool load() {
            registerSurfaceTypes();
            view.setInitialProperties({{"player", QVariant::fromValue(&player)},
                                       {"panel", QVariant::fromValue(&panel)},
                                       {"theme", QVariant::fromValue(&theme)}});
            view.setSource(QUrl("qrc:/qt/qml/MirlPlayer/Panel/PanelSurface.qml"));
            view.resize(1512, 498);
            return view.status() == QQuickView::Ready;
        }
        QQuickItem* item(const char* name) {
            return view.rootObject()->findChild<QQuickItem*>(QString::fromLatin1(name));
        }
    };

private Q_SLOTS:
    void initTestCase() { registerVisualizerTypes(); }

    void timesReadAsMinutesAndSeconds_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("start") << 0.0 << "0:00";
        QTest::newRow("rounds down") << 59.99 << "0:59";
        QTest::newRow("minutes") << 225.0 << "3:45";
        QTest::newRow("an hour on") << 3725.0 << "1:02:05";
        QTest::newRow("negative") << -4.0 << "0:00";
        QTest::newRow("not a number") << qQNaN() << "0:00";
        QTest::newRow("infinite") << qInf() << "0:00";
    }
    void timesReadAsMinutesAndSeconds() {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(formatPlayTime(seconds), text);
    }

    void artworkIsServedAtTheAskedSize() {
        ArtworkImageProvider provider;
        QSize size;
        QVERIFY(provider.requestImage("1", &size, QSize()).isNull());
        QImage cover(400, 200, QImage::Format_RGB32);
        cover.fill(Qt::red);
        provider.setImage(cover);
        const QImage served = provider.requestImage("2", &size, QSize(100, 100));
        QCOMPARE(size, QSize(200, 100)); // fills the square, cropped by the view
        QCOMPARE(QColor(served.pixel(10, 10)), QColor(Qt::red));
    }

    void slotsInterpolate_data() {
        QTest::addColumn<double>("p");
        QTest::addColumn<QRectF>("rect");
        QTest::newRow("start") << 0.0 << QRectF(10, 20, 40, 40);
        QTest::newRow("midway") << 0.5 << QRectF(60, 30, 80, 60);
        QTest::newRow("arrived") << 1.0 << QRectF(110, 40, 120, 80);
        QTest::newRow("overshoot") << 1.1 << QRectF(120, 42, 128, 84);
        QTest::newRow("never negative") << -2.0 << QRectF(-190, -20, 0, 0);
    }
    void slotsInterpolate() {
        QFETCH(double, p);
        QTEST(SurfaceSlots::interpolate({10, 20, 40, 40}, {110, 40, 120, 80}, p), "rect");
    }

    // The pill's indicator box grows into the card's art square along the spring's path.
    void thePiecesGlideWithTheShapesSpring() {
        ManualClock clock;
        SurfaceSlots places(clock);
        using A = SurfaceSlots::Arrangement;
        using S = SurfaceSlots::Slot;
        const QRectF from = SurfaceSlots::slotRect(A::pill, S::art);
        const QRectF to = SurfaceSlots::slotRect(A::visualizer, S::art);
        QCOMPARE(places.art(), from);
        const double start = clock.now();
        places.setArrangement(A::visualizer);
        const Spring spring{0.4, 0.82, 0}; // the size change's spring, at motion speed 1
        for (double t : {0.05, 0.1, 0.2}) {
            clock.advance(start + t - clock.now());
            places.advance();
            const QRectF expected = SurfaceSlots::interpolate(from, to, spring.progress(t));
            QVERIFY2(std::abs(places.art().x() - expected.x()) < 1e-9 &&
                         std::abs(places.art().width() - expected.width()) < 1e-9,
                     qPrintable(QString::number(t)));
        }
        clock.advance(5);
        places.advance();
        QCOMPARE(places.art(), to);
        QVERIFY(!places.moving());
    }

    // The compositor's blur stays inside the round corners: rows that cover the rounded shape.
    void theBlurRegionIsTheRoundedShape_data() {
        QTest::addColumn<double>("radius");
        QTest::addColumn<double>("area");
        QTest::newRow("card") << 12.0 << 100 * 40 - (4 - M_PI) * 144;
        QTest::newRow("square corners") << 0.0 << 4000.0;
        QTest::newRow("radius past half the height") << 30.0 << 100 * 40 - (4 - M_PI) * 400;
    }
    void theBlurRegionIsTheRoundedShape() {
        QFETCH(double, radius);
        QFETCH(double, area);
        const QVector<QRect> rows = SurfaceGeometry::roundedRegion({50, 20, 100, 40}, radius);
        double covered = 0;
        int y = 20;
        for (const QRect& r : rows) {
            QCOMPARE(r.top(), y); // row after row, no gaps or overlaps
            y = r.bottom() + 1;
            QVERIFY(QRect(50, 20, 100, 40).contains(r));
            covered += r.width() * r.height();
        }
        QCOMPARE(y, 60);
        QVERIFY2(std::abs(covered - area) < 0.01 * area, qPrintable(QString::number(covered)));
    }

    void theTimelineShowsTheDragAndSeeksOnRelease_data() {
        QTest::addColumn<double>("duration");
        QTest::addColumn<double>("x");
        QTest::addColumn<double>("shown");
        QTest::addColumn<double>("after");
        QTest::newRow("middle") << 200.0 << 25.0 << 0.25 << 50.0;
        QTest::newRow("past the end") << 200.0 << 150.0 << 1.0 << 200.0;
        QTest::newRow("before the start") << 200.0 << -20.0 << 0.0 << 0.0;
        QTest::newRow("no duration: nowhere") << 0.0 << 50.0 << 0.0 << 120.0;
    }
    void theTimelineShowsTheDragAndSeeksOnRelease() {
        QFETCH(double, duration);
        QFETCH(double, x);
        PlayerState player(nullptr);
        player.publishDuration(duration);
        player.clock()->setPosition(120);
        TimelineModel timeline;
        timeline.setPlayer(&player);
        timeline.drag(x, 100);
        QTEST(timeline.fraction(), "shown");
        QCOMPARE(player.clock()->position(), 120.0); // no seek while dragging
        timeline.release();
        QTEST(player.clock()->position(), "after");
        QVERIFY(!timeline.dragging());
    }

    void aNewPositionIsShownWithTheNextLevels() {
        PlayerState player(nullptr);
        player.publishDuration(200);
        ManualClock clock;
        TimelineModel timeline;
        timeline.setClock(clock);
        timeline.setPlayer(&player);
        timeline.setShown(true);
        QSignalSpy changed(&timeline, &TimelineModel::changed);
        player.clock()->setPosition(10); // no levels: at once
        QCOMPARE(changed.count(), 1);
        player.eqStore()->setLevels(QList<double>(128, 0.5));
        player.clock()->setPosition(11); // levels are arriving: it waits for the next
        QCOMPARE(changed.count(), 1);
        player.eqStore()->setLevels(QList<double>(128, 0.4));
        QCOMPARE(changed.count(), 2);
        QCOMPARE(timeline.elapsedText(), QStringLiteral("0:11"));
        clock.advance(0.2); // the levels stopped
        player.clock()->setPosition(12);
        QCOMPARE(changed.count(), 3);
    }

    void theArtOpensTheLibraryOrTheMusicPlayer() {
        PlayerState player(nullptr);
        ArtSlot art;
        art.setPlayer(&player);
        QSignalSpy library(&art, &ArtSlot::openLibrary);
        QCOMPARE(art.label(), QStringLiteral("Browse Spotify library"));
        art.tap();
        QCOMPARE(library.count(), 1);
        player.publishSourceName(QStringLiteral("Music"));
        QCOMPARE(art.label(), QStringLiteral("Open the music player")); // at once
        art.hover(QPointF(10, 10));
        QVERIFY(!art.hoverPending()); // hover never opens the library for Apple Music
        art.tap();
        QCOMPARE(library.count(), 1);
    }

    void creditsBelongToTheTrackThatAskedForThem() {
        // Each request waits for a gate of its own; the reply names the artist after the path.
        std::map<QString, std::unique_ptr<QTimer>> gates;
        NowPlayingArtists credits(
            [&](QString path) -> QCoro::Task<QJsonObject> {
                QTimer* gate = (gates[path] = std::make_unique<QTimer>()).get();
                gate->setSingleShot(true);
                // Running until the test opens it early with start(0); awaited as a timer, since
                // the awaiter of the timeout signal trips the sanitizer on its private argument.
                gate->start(std::chrono::hours(1));
                co_await gate;
                const QJsonObject artist{
                    {"type", "artist"}, {"id", "a"}, {"name", path}, {"uri", "spotify:artist:a"}};
                co_return QJsonObject{{"artists", QJsonArray{artist}}};
            },
            [] { return true; });
        credits.setTrackURI(QStringLiteral("file:///music/local.flac"));
        QVERIFY(gates.empty()); // a local file asks nothing
        credits.setTrackURI(QStringLiteral("spotify:track:first"));
        credits.setTrackURI(QStringLiteral("spotify:track:second")); // while the first is out
        QCOMPARE(gates.size(), size_t(2));
        gates.at("tracks/first")->start(0);
        QTest::qWait(20);
        QVERIFY(credits.artists().isEmpty()); // the first track's reply is dropped
        gates.at("tracks/second")->start(0);
        QTRY_COMPARE(credits.artists().size(), 1);
        QCOMPARE(credits.artists().first().name, QStringLiteral("tracks/second"));
    }

    void theCardShowsTheModelAndItsButtonsCommand() {
        Surface s(m_dir.filePath("a.conf"));
        s.theme.setShowVisualizer(false);
        QVERIFY2(s.load(), qPrintable(s.view.errors().value(0).toString()));
        s.player.publishTitle("First Light");
        s.panel.setShape(true, QRectF(632, 38, 248, 336));
        QCOMPARE(s.item("title")->property("text").toString(), QStringLiteral("First Light"));
        QTRY_VERIFY(s.item("title")->isVisible()); // the card fades in
        QTRY_VERIFY(!s.item("visualizer")->isVisible());

        // With nothing to command, the button flips at once and nothing else happens.
        QQuickItem* play = s.item("playPauseButton");
        QVERIFY(play);
        QVERIFY(!s.player.isPlaying());
        QMetaObject::invokeMethod(play, "activate");
        QVERIFY(s.player.isPlaying());
    }

    void theWideCardShowsTheChosenStyle_data() {
        QTest::addColumn<QString>("vizID");
        QTest::addColumn<QString>("view");
        QTest::newRow("designer") << "phosphor"
                                  << "MirlPlayer::DesignerSpectrum";
        QTest::newRow("unknown id") << "aurora"
                                    << "MirlPlayer::NeonWaterfallView";
    }
    void theWideCardShowsTheChosenStyle() {
        QFETCH(QString, vizID);
        QFETCH(QString, view);
        Surface s(m_dir.filePath("b.conf"));
        s.theme.setShowVisualizer(true);
        s.theme.setVizID(vizID);
        QVERIFY(s.load());
        s.panel.setShape(true, QRectF(466, 38, 580, 168));
        QQuickItem* visualizer = s.item("visualizer");
        QTRY_VERIFY(visualizer->isVisible()); // the card fades in
        auto* loader = visualizer->findChild<QQuickItem*>("styleLoader");
        QVERIFY(loader);
        auto* shown = loader->property("item").value<QQuickItem*>();
        QVERIFY(shown);
        QCOMPARE(QString::fromLatin1(shown->metaObject()->className()), view);
    }
};

QTEST_MAIN(tst_PanelView)
#include "tst_PanelView.moc"
