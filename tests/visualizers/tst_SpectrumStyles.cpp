#include "X11TestMain.h"
#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "visualizers/views/VisualizerTypes.h"

#include <QGuiApplication>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

// Every style drawn by the real scene graph on a private X server (OpenGL through Mesa), from a
// fixed input: the lowest third of the bands loud and the rest silent, and the stereo field loud
// on the left third only.
class tst_SpectrumStyles : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    ManualClock m_clock;
    Preferences m_prefs{m_dir.filePath("prefs.conf")};
    Theme m_theme{m_prefs, m_clock};

    // The mean of the brightest channel over a part of the image given in fractions of its size.
    static double brightness(const QImage& image, const QRectF& part) {
        const QRect r(int(part.x() * image.width()), int(part.y() * image.height()),
                      int(part.width() * image.width()), int(part.height() * image.height()));
        double sum = 0;
        for (int y = r.top(); y <= r.bottom(); ++y)
            for (int x = r.left(); x <= r.right(); ++x) {
                const QRgb p = image.pixel(x, y);
                sum += std::max({qRed(p), qGreen(p), qBlue(p)}) / 255.0;
            }
        return sum / (r.width() * r.height());
    }

    QImage render(const QString& vizID, double loud) {
        LevelsStore levels;
        StereoStore stereo;
        QQuickView view;
        view.setColor(Qt::black);
        view.setResizeMode(QQuickView::SizeRootObjectToView);
        view.resize(320, 160);
        view.setInitialProperties({{"vizID", vizID},
                                   {"levelsStore", QVariant::fromValue(&levels)},
                                   {"stereoStore", QVariant::fromValue(&stereo)},
                                   {"theme", QVariant::fromValue(&m_theme)}});
        view.setSource(QUrl("qrc:/qt/qml/MirlPlayer/Visualizers/SpectrumView.qml"));
        if (view.status() != QQuickView::Ready)
            return {};
        view.show();
        if (!QTest::qWaitForWindowExposed(&view))
            return {};
        StereoStore::Curve curve{};
        std::fill(curve.begin(), curve.begin() + 32, float(loud));
        // Enough publications to fill every history; each one differs a little from the last,
        // since the store publishes only a change.
        for (int i = 0; i < 260; ++i) {
            QList<double> bands(LevelsStore::bandCount, 0.0);
            std::fill(bands.begin(), bands.begin() + 43, loud - (i % 2) * 1e-6);
            stereo.update(curve);
            levels.setLevels(bands);
        }
        return view.grabWindow();
    }

private Q_SLOTS:
    void initTestCase() { registerVisualizerTypes(); }

    void eachStyleDrawsWhereTheSoundIs_data() {
        QTest::addColumn<QString>("vizID");
        QTest::addColumn<QRectF>("loud");  // where the loud input shows
        QTest::addColumn<QRectF>("quiet"); // where the silent part of it shows
        QTest::addColumn<double>("contrast");
        const QRectF lowBars(0.02, 0.3, 0.28, 0.6), highBars(0.5, 0.3, 0.45, 0.6);
        const QRectF aboveMiddleLeft(0.02, 0.2, 0.28, 0.25), aboveMiddleRight(0.5, 0.2, 0.45, 0.25);
        const QRectF leftThird(0, 0, 0.33, 1), rightThird(0.67, 0, 0.33, 1);
        QTest::newRow("bars") << "bars" << lowBars << highBars << 3.0;
        QTest::newRow("mirror") << "mirror" << aboveMiddleLeft << aboveMiddleRight << 3.0;
        QTest::newRow("skyline") << "skyline" << lowBars << highBars << 3.0;
        QTest::newRow("phosphor") << "phosphor" << lowBars << highBars << 3.0;
        QTest::newRow("circuitry") << "circuitry" << aboveMiddleLeft << aboveMiddleRight << 3.0;
        QTest::newRow("silk") << "silk" << QRectF(0.02, 0.12, 0.28, 0.3)
                              << QRectF(0.5, 0.12, 0.45, 0.3) << 3.0;
        QTest::newRow("waterfall") << "waterfall" << leftThird << rightThird << 3.0;
        // The landscape's left side rises towards the top; its flat right side stays low, under
        // the dense lines of its wireframe.
        QTest::newRow("stereo") << "stereo" << QRectF(0.02, 0.12, 0.3, 0.2)
                                << QRectF(0.5, 0.6, 0.4, 0.25) << 1.5;
        // Hard left is at the top of the analyzer.
        QTest::newRow("stereoAnalyzer") << "stereoAnalyzer" << QRectF(0.1, 0.15, 0.8, 0.22)
                                        << QRectF(0.1, 0.62, 0.8, 0.22) << 3.0;
    }
    void eachStyleDrawsWhereTheSoundIs() {
        QFETCH(QString, vizID);
        QFETCH(QRectF, loud);
        QFETCH(QRectF, quiet);
        QFETCH(double, contrast);
        const QImage sound = render(vizID, 0.9);
        QVERIFY(!sound.isNull());
        // Run again under the software scene graph, the 3D styles draw nothing (and nothing
        // breaks); the flat ones draw as before.
        const bool threeD = vizID == "waterfall" || vizID.startsWith("stereo");
        if (threeD && qEnvironmentVariable("QT_QUICK_BACKEND") == "software") {
            QCOMPARE(brightness(sound, QRectF(0, 0, 1, 1)), 0.0);
            return;
        }
        const QImage silence = render(vizID, 0.0);
        const double lit = brightness(sound, loud);
        const QString figures = QStringLiteral("loud %1, quiet %2, silence %3")
                                    .arg(lit)
                                    .arg(brightness(sound, quiet))
                                    .arg(brightness(silence, loud));
        QVERIFY2(lit > 0.12, qPrintable(figures));
        QVERIFY2(brightness(sound, quiet) < lit / contrast, qPrintable(figures));
        QVERIFY2(brightness(silence, loud) < lit / 3, qPrintable(figures));
    }
};

int main(int argc, char** argv) {
    requestVisualizerGraphics();
    return MirlPlayer::Test::runOnPrivateX<tst_SpectrumStyles>(argc, argv);
}

#include "tst_SpectrumStyles.moc"
