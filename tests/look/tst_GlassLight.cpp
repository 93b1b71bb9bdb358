#include "look/PlayerBackdrop.h"
#include "look/Reflection.h"
#include "look/ReflectionEnvelope.h"
#include "look/RoundedMesh.h"

#include <QTest>

using namespace MirlPlayer;

// The light in the glass, against values worked out by hand.
class tst_GlassLight : public QObject {
    Q_OBJECT

    static HSB plain(double p, double m) { return {p, m, 1}; } // position and magnitude, visible

private Q_SLOTS:
    void theEnvelopeRisesFallsAndNeverJumps() {
        ReflectionEnvelope env;
        const QList<double> loud{0.2, 0.8, 0.4, 0.0, 0.9}; // the fifth band lies beyond the pools
        // The first update only sizes the pools.
        QCOMPARE(env.update(loud, 2, 0.5, 0.5, 10.0), std::vector<double>({0.0, 0.0}));
        // 50 ms of attack 0.5: time constant 0.134 s, towards the loudest band of each pool.
        auto m = env.update(loud, 2, 0.5, 0.5, 10.05);
        QCOMPARE(m[0], 0.24914181457058487);
        QCOMPARE(m[1], 0.12457090728529244);
        // Silence for 100 ms of release 0.5: time constant 0.875 s.
        const QList<double> silent(4, 0.0);
        m = env.update(silent, 2, 0.5, 0.5, 10.15);
        QCOMPARE(m[0], 0.22223526133294086);
        // A stall of ten seconds counts as 100 ms.
        m = env.update(silent, 2, 0.5, 0.5, 20.0);
        QCOMPARE(m[0], 0.19823453347181175);
        // Too few bands for the pools: nothing moves, but time does.
        m = env.update({1.0}, 2, 0.5, 0.5, 20.05);
        QCOMPARE(m[0], 0.19823453347181175);
        QCOMPARE(env.last(), 20.05);
        // A new pool count starts over from dark.
        QCOMPARE(env.update(loud, 4, 0.5, 0.5, 20.1), std::vector<double>(4, 0.0));
    }

    void loudPoolsTurnWhiter_data() {
        QTest::addColumn<double>("strength");
        QTest::addColumn<double>("sat");
        QTest::newRow("full colour") << 2.0 << 0.8;
        QTest::newRow("whitened") << 1.0 << 0.46;
    }
    void loudPoolsTurnWhiter() {
        QFETCH(double, strength);
        QFETCH(double, sat);
        const HSB c = lightColour({0.3, 0.8, 0.9}, 0.8, strength, {0.6, 0.98, 1.0});
        QCOMPARE(c.h, 0.3);
        QCOMPARE(c.s, sat);
        QCOMPARE(c.b, 0.9 * 0.954);
    }

    void theGlassLightsTheBottomEdgeButNotTheBass() {
        std::vector<double> mags(22, 0.0);
        mags[11] = 0.5;
        mags[1] = 0.9; // bass: no light of its own, yet it counts in the mean
        ReflectionSettings s;
        s.amount = 1.5;
        const ReflectionFrame f = glassReflection(mags, 220, 100, s, plain);
        QCOMPARE(f.blobs.size(), size_t(1));
        QCOMPARE(f.blobs[0].centre, QPointF(115, 100));
        QCOMPARE(f.blobs[0].radius, 55.0);
        QCOMPARE(f.blobs[0].alpha, 0.06925187325065155);
        QVERIFY(f.wash);
        QCOMPARE(f.wash->alpha, 0.013363636363636364);
        QCOMPARE(f.wash->colour.s, 0.08909090909090908); // the mean's magnitude, at p = 0.5
        s.amount = 0.001;
        QVERIFY(glassReflection(mags, 220, 100, s, plain).blobs.empty());
    }

    void theEdgeLightWalksTheRimFromTheBottomMiddle_data() {
        QTest::addColumn<int>("pool");
        QTest::addColumn<QPointF>("at");
        QTest::newRow("lowest: bottom middle") << 0 << QPointF(100, 100);
        QTest::newRow("a third: bottom right corner") << 7 << QPointF(200, 100);
        QTest::newRow("two thirds: top right corner") << 14 << QPointF(200, 0);
        QTest::newRow("highest: top middle") << 21 << QPointF(100, 0);
    }
    void theEdgeLightWalksTheRimFromTheBottomMiddle() {
        QFETCH(int, pool);
        QFETCH(QPointF, at);
        std::vector<double> mags(22, 0.0);
        mags[size_t(pool)] = 0.5;
        ReflectionSettings s;
        s.amount = 1.5;
        const ReflectionFrame f = edgeReflection(mags, 200, 100, s, plain);
        QCOMPARE(f.blobs.size(), size_t(2));
        QCOMPARE(f.blobs[0].centre, at);
        QCOMPARE(f.blobs[1].centre, QPointF(200 - at.x(), at.y())); // the mirror
        QCOMPARE(f.blobs[0].radius, 21.0);
        QCOMPARE(f.blobs[0].alpha, 0.07848545635073842);
    }

    void theLibraryHasItsOwnAmountAndAWiderSpread_data() {
        QTest::addColumn<bool>("edge");
        QTest::addColumn<bool>("library");
        QTest::addColumn<double>("amount");
        QTest::addColumn<double>("diffusion");
        QTest::addColumn<double>("blur");
        QTest::newRow("glass") << false << false << 1.0 << 0.7 << 0.0;
        QTest::newRow("glass, library") << false << true << 2.0 << 0.9 * 1.6 << 18.0;
        QTest::newRow("edge") << true << false << 3.0 << 0.8 << 0.0;
        QTest::newRow("edge, library") << true << true << 4.0 << 1.0 * 2.2 << 18.0;
    }
    void theLibraryHasItsOwnAmountAndAWiderSpread() {
        QFETCH(bool, edge);
        QFETCH(bool, library);
        const QHash<QString, double> tuning{{"reflectAmount", 1},    {"reflectLibraryAmount", 2},
                                            {"edgeAmount", 3},       {"edgeLibraryAmount", 4},
                                            {"reflectDiffuse", 0.2}, {"reflectLibraryDiffuse", 0.4},
                                            {"edgeDiffuse", 0.3},    {"edgeLibraryDiffuse", 0.5}};
        const ReflectionSettings s =
            reflectionSettings(edge ? ReflectionKind::edge : ReflectionKind::glass, library,
                               [&](const QString& key) { return tuning.value(key); });
        QTEST(s.amount, "amount");
        QTEST(s.diffusion, "diffusion");
        QTEST(s.blur, "blur");
    }

    // The frost and the veil as one paint look like the two layers over any background.
    void theStackedPaintLooksLikeBothLayers_data() {
        QTest::addColumn<double>("under");
        QTest::addColumn<double>("over");
        QTest::newRow("both half") << 0.5 << 0.5;
        QTest::newRow("no veil") << 0.8 << 0.0;
        QTest::newRow("opaque veil") << 0.3 << 1.0;
        QTest::newRow("nothing") << 0.0 << 0.0;
    }
    void theStackedPaintLooksLikeBothLayers() {
        QFETCH(double, under);
        QFETCH(double, over);
        const QColor frost = PlayerBackdrop::frostColor();
        const QColor veil(200, 10, 40);
        const QColor one = PlayerBackdrop::stacked(frost, under, veil, over);
        const auto paint = [](double bg, double c, double a) { return c * a + bg * (1 - a); };
        for (double bg : {0.0, 1.0}) {
            const double a1 = frost.alphaF() * under;
            const double twoLayers = paint(paint(bg, frost.redF(), a1), veil.redF(), over);
            QVERIFY(std::abs(paint(bg, one.redF(), one.alphaF()) - twoLayers) < 1e-3);
        }
    }

    // The glass as one mesh: no triangle spans the sheen's clear middle, so the sheen's two
    // ramps are drawn exactly, and the edge fades to clear outside the shape.
    void theGlassMeshBendsWhereTheSheenIsClear() {
        const double w = 580, h = 170;
        const auto along = [&](double x, double y) { return (x * w + y * h) / (w * w + h * h); };
        RoundedMesh mesh;
        mesh.addRoundedRect(
            QRectF(0, 0, w, h), 30, 1,
            [](double, double) {
                return MeshColour{1, 1, 1, 1};
            },
            [&](double x, double y) { return along(x, y) - 0.5; });
        const auto& v = mesh.vertices();
        const auto& i = mesh.indices();
        QVERIFY(i.size() % 3 == 0 && !i.empty());
        for (std::size_t k = 0; k < i.size(); k += 3) {
            double lo = 1, hi = 0;
            for (std::size_t c = k; c < k + 3; ++c) {
                lo = std::min(lo, along(v[i[c]].x, v[i[c]].y));
                hi = std::max(hi, along(v[i[c]].x, v[i[c]].y));
            }
            QVERIFY2(lo > 0.5 - 1e-6 || hi < 0.5 + 1e-6, qPrintable(QString::number(k)));
        }
        for (const MeshVertex& p : v) {
            const double qx = std::abs(p.x - w / 2) - (w / 2 - 30);
            const double qy = std::abs(p.y - h / 2) - (h / 2 - 30);
            const bool outside = std::hypot(std::max(qx, 0.0), std::max(qy, 0.0)) +
                                     std::min(std::max(qx, qy), 0.0) - 30 >
                                 0;
            QCOMPARE(p.a, outside ? 0 : 255);
        }
    }

    void theBackdropFallsBackWhereItCannotBeDrawn_data() {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("reduce");
        QTest::addColumn<bool>("glass");
        QTest::addColumn<QString>("form");
        QTest::newRow("frosted") << "frosted" << false << false << "frosted";
        QTest::newRow("liquid without glass") << "liquid" << false << false << "frosted";
        QTest::newRow("liquid with glass") << "liquid" << false << true << "liquid";
        QTest::newRow("unknown") << "velvet" << false << true << "frosted";
        QTest::newRow("reduced transparency") << "liquid" << true << true << "solid";
    }
    void theBackdropFallsBackWhereItCannotBeDrawn() {
        QFETCH(QString, stored);
        QFETCH(bool, reduce);
        QFETCH(bool, glass);
        QTEST(rawValue(PlayerBackdrop::effectiveForm(stored, reduce, glass)), "form");
    }
};

QTEST_GUILESS_MAIN(tst_GlassLight)
#include "tst_GlassLight.moc"
