#include "core/Preferences.h"
#include "look/Theme.h"
#include "panel/PanelView.h"
#include "playback/PlayerState.h"
#include "visualizers/views/VisualizerTypes.h"

#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

// What the surface reads of the panel: its stage and the shape in force.
class StandInPanel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool expanded MEMBER m_expanded NOTIFY changed)
    Q_PROPERTY(QRectF pillRect MEMBER m_pill NOTIFY changed)
    Q_PROPERTY(QRectF cardRect MEMBER m_card NOTIFY changed)
    Q_PROPERTY(QString artworkSource MEMBER m_art NOTIFY changed)
    Q_PROPERTY(bool animatesShape READ animatesShape CONSTANT)
public:
    bool m_expanded = false;
    QRectF m_pill{723, 38, 66, 24};
    QRectF m_card{466, 38, 580, 168};
    QString m_art;
    bool animatesShape() const { return true; }
    Q_INVOKABLE QString formatTime(double seconds) const { return formatPlayTime(seconds); }
    void setExpanded(bool expanded, QRectF card) {
        m_expanded = expanded;
        m_card = card;
        Q_EMIT changed();
    }
Q_SIGNALS:
    void changed();
};

class tst_PanelView : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    struct Surface {
        ManualClock clock;
        Preferences prefs;
        Theme theme{prefs, clock};
        PlayerState player{nullptr};
        StandInPanel panel;
        QQuickView view;
        explicit Surface(const QString& path)
            : prefs(path) {}
        bool load() {
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

    void theCardShowsTheModelAndItsButtonsCommand() {
        Surface s(m_dir.filePath("a.conf"));
        s.theme.setShowVisualizer(false);
        QVERIFY2(s.load(), qPrintable(s.view.errors().value(0).toString()));
        s.player.publishTitle("First Light");
        s.panel.setExpanded(true, QRectF(632, 38, 248, 336));
        QCOMPARE(s.item("title")->property("text").toString(), QStringLiteral("First Light"));
        QTRY_VERIFY(s.item("title")->isVisible()); // the card fades in
        QVERIFY(!s.item("visualizer")->isVisible());

        // With nothing to command, the button flips at once and nothing else happens.
        QQuickItem* play = s.item("playPauseButton");
        QVERIFY(play);
        QVERIFY(!s.player.isPlaying());
        QMetaObject::invokeMethod(play, "clicked");
        QVERIFY(s.player.isPlaying());
    }

    void theWideCardShowsTheChosenStyle_data() {
        QTest::addColumn<QString>("vizID");
        QTest::addColumn<QString>("view");
        QTest::newRow("bars") << "bars"
                              << "MirlPlayer::BarsEQ";
        QTest::newRow("mirror") << "mirror"
                                << "MirlPlayer::MirrorEQ";
        QTest::newRow("designer") << "phosphor"
                                  << "MirlPlayer::DesignerSpectrum";
        QTest::newRow("analyzer") << "stereoAnalyzer"
                                  << "MirlPlayer::StereoAnalyzerView";
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
        s.panel.setExpanded(true, QRectF(466, 38, 580, 168));
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
