#include "core/Clock.h"
#include "core/Preferences.h"
#include "visualizers/views/BarShape.h"
#include "visualizers/views/GpuSpectrumViews.h"
#include "visualizers/views/RendererMath.h"
#include "visualizers/views/SpectrumColours.h"
#include "visualizers/views/SpectrumHistory.h"

#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

// The numbers behind the styles: colours of a level, display columns, history rows, uniforms.
class tst_SpectrumMath : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void levelsColourTheirPlace_data() {
        QTest::addColumn<double>("level");
        QTest::addColumn<double>("peakWhite");
        QTest::addColumn<double>("saturation");
        QTest::addColumn<double>("brightness");
        QTest::newRow("silent band") << 0.0 << 0.0 << 0.76 << 0.6;
        QTest::newRow("loudest band is capped") << 1.0 << 0.0 << 0.76 << 1.0;
        QTest::newRow("hot band towards white") << 0.8 << 1.0 << 0.46 << 0.954;
        QTest::newRow("whitening stops at a fifth") << 1.0 << 1.0 << 0.16 << 1.0;
    }
    void levelsColourTheirPlace() {
        QFETCH(double, level);
        QFETCH(double, peakWhite);
        QFETCH(double, saturation);
        QFETCH(double, brightness);
        EQTuning tuning;
        tuning.peakWhite = peakWhite;
        const HSB c = levelColour({0.5, 0.8, 1.0}, level, tuning);
        QCOMPARE(c.h, 0.5);
        QVERIFY2(qAbs(c.s - saturation) < 1e-9, qPrintable(QString::number(c.s)));
        QVERIFY2(qAbs(c.b - brightness) < 1e-9, qPrintable(QString::number(c.b)));
    }

    // 128 bands on a canvas 256 wide and 100 high: slots of 2.
    void barsStandInTheirSlots_data() {
        QTest::addColumn<bool>("mirrored");
        QTest::addColumn<double>("round");
        QTest::addColumn<double>("level");
        QTest::addColumn<QRectF>("rect");
        QTest::addColumn<double>("radius");
        QTest::newRow("silent band is a 1-point bar")
            << false << 1.5 << 0.0 << QRectF(10.3, 99, 1.4, 1) << 0.7;
        QTest::newRow("round within the width")
            << false << 0.4 << 0.5 << QRectF(10.3, 50, 1.4, 50) << 0.4;
        QTest::newRow("mirrored about the middle")
            << true << 0.0 << 0.5 << QRectF(10.3, 25, 1.4, 50) << 0.7;
        QTest::newRow("silent mirrored band")
            << true << 0.0 << 0.0 << QRectF(10.3, 49, 1.4, 2) << 0.7;
    }
    void barsStandInTheirSlots() {
        QFETCH(bool, mirrored);
        QFETCH(double, round);
        QFETCH(double, level);
        QFETCH(QRectF, rect);
        QFETCH(double, radius);
        const BarShape shape = mirrored ? BarShape::mirroredAbout(128, 256, 100, 0.7, 0.5)
                                        : BarShape::standing(128, 256, 100, 0.7, round);
        const QRectF r = shape.rect(5, level);
        QVERIFY2(qAbs(r.x() - rect.x()) + qAbs(r.y() - rect.y()) + qAbs(r.width() - rect.width()) +
                         qAbs(r.height() - rect.height()) <
                     1e-9,
                 qPrintable(QStringLiteral("%1 %2 %3 %4")
                                .arg(r.x())
                                .arg(r.y())
                                .arg(r.width())
                                .arg(r.height())));
        QCOMPARE(shape.radius, radius);
    }

    void columnsTakeTheLoudestBandOfTheirShare_data() {
        QTest::addColumn<QList<double>>("levels");
        QTest::addColumn<int>("count");
        QTest::addColumn<QList<double>>("columns");
        QTest::newRow("three bands each")
            << QList<double>{0.1, 0.5, 0.2, 0.3, 0.9, 0.4} << 2 << QList<double>{0.5, 0.9};
        QTest::newRow("fewer bands than columns")
            << QList<double>{0.2, 0.9} << 4 << QList<double>{0.2, 0.2, 0.9, 0.9};
        QTest::newRow("clamped") << QList<double>{1.4, -0.2} << 2 << QList<double>{1.0, 0.0};
        QTest::newRow("no levels") << QList<double>{} << 40 << QList<double>{};
    }
    void columnsTakeTheLoudestBandOfTheirShare() {
        QFETCH(QList<double>, levels);
        QFETCH(int, count);
        QFETCH(QList<double>, columns);
        QCOMPARE(spectrumColumns(levels, count), columns);
    }

    void historyShiftsAndResamples() {
        SpectrumHistory front(3, 4, SpectrumHistory::Newest::first);
        front.push(std::span<const double>(std::vector<double>{1, 2}));
        front.push(std::span<const float>());
        QCOMPARE(front.heights(), (std::vector<float>{0, 0, 0, 0, 1, 1, 2, 2, 0, 0, 0, 0}));
        SpectrumHistory back(3, 2, SpectrumHistory::Newest::last);
        const std::vector<float> wide{1, 2, 3, 4, 5, 6};
        back.push(std::span<const float>(wide));
        back.push(std::span<const float>(std::vector<float>{7}));
        QCOMPARE(back.heights(), (std::vector<float>{0, 0, 1, 4, 7, 7}));
    }

    // The 3D styles move one row per publication of the levels; the analyzer only when the
    // stereo curve is new.
    void historyMovesWithThePublications_data() {
        QTest::addColumn<QString>("style");
        QTest::addColumn<int>("rowsMoved");
        QTest::newRow("waterfall") << "waterfall" << 3;
        QTest::newRow("stereo") << "stereo" << 3;
        QTest::newRow("analyzer") << "stereoAnalyzer" << 1;
    }
    void historyMovesWithThePublications() {
        QFETCH(QString, style);
        QFETCH(int, rowsMoved);
        QTemporaryDir dir;
        Preferences prefs(dir.filePath("prefs.conf"));
        VizConfig config(prefs);
        LevelsStore levels;
        StereoStore stereo;
        SpectrumSource source;
        source.setConfig(&config);
        source.setLevelsStore(&levels);
        source.setStereoStore(&stereo);
        std::unique_ptr<GpuSpectrumView> view;
        if (style == "waterfall")
            view = std::make_unique<NeonWaterfallView>();
        else if (style == "stereo")
            view = std::make_unique<StereoWaterfallView>();
        else
            view = std::make_unique<StereoAnalyzerView>();
        view->setSource(&source);
        StereoStore::Curve curve;
        curve.fill(1.0f);
        stereo.update(curve); // one new curve, then three publications of the levels
        for (int i = 1; i <= 3; ++i)
            levels.setLevels(QList<double>(LevelsStore::bandCount, 1.0 - i * 0.01));
        // Rows that moved in hold something; the rest are still the empty start.
        const SpectrumHistory& history = view->history();
        int filled = 0;
        for (int r = 0; r < history.count(); ++r)
            filled += history.heights()[std::size_t(r * history.width())] > 0 ? 1 : 0;
        QCOMPARE(filled, rowsMoved);
    }

    void landscapeSpanFollowsTheAspectWithinItsLimits_data() {
        QTest::addColumn<float>("aspect");
        QTest::addColumn<float>("span");
        QTest::newRow("narrow") << 1.0f << 1.6f;
        QTest::newRow("card") << 3.0f << 2.55f;
        QTest::newRow("very wide") << 20.0f << 11.0f;
    }
    void landscapeSpanFollowsTheAspectWithinItsLimits() {
        QFETCH(float, aspect);
        QFETCH(float, span);
        QCOMPARE(RendererMath::landscapeSpan(aspect), span);
    }

    void neonPassesDifferInWidthAndGlow() {
        using RendererMath::NeonPass;
        const auto halo = RendererMath::neonUniforms(2.0f, NeonPass::halo, 0.0, 0.992, 4.5);
        const auto core = RendererMath::neonUniforms(2.0f, NeonPass::core, 0.0, 0.992, 4.5);
        QCOMPARE(halo.params, QVector4D(1.7f, 0.992f, 4.5f, 1.7f * 0.005f));
        QCOMPARE(core.params.w(), 1.7f * 0.0035f);
        QCOMPARE(halo.grid, QVector4D(128, 64, 96, 0));
        QCOMPARE(core.grid.w(), 1.0f);
        const auto glowing = RendererMath::neonUniforms(2.0f, NeonPass::halo, 1.0, 1, 1);
        QCOMPARE(glowing.params.w(), 1.7f * 0.01f * 2.1f);
        // The camera looks at its target: it lands in the middle of the view.
        const QVector3D centre = halo.mvp.map(QVector3D(0, 0.4f, -1.1f));
        QVERIFY(qAbs(centre.x()) < 1e-5f && qAbs(centre.y()) < 1e-5f);
    }
};

QTEST_MAIN(tst_SpectrumMath)
#include "tst_SpectrumMath.moc"
