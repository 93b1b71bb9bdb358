#include "look/HSB.h"
#include "look/OKLab.h"
#include "look/Ramp.h"

#include <QTest>
#include <cmath>

using namespace MirlPlayer;

namespace {
bool near(double a, double b, double tolerance) {
    return std::abs(a - b) <= tolerance;
}
// Hue distance on the wheel, in turns.
double hueGap(double a, double b) {
    const double d = std::abs(a - b);
    return std::min(d, 1.0 - d);
}
} // namespace

class tst_Colour : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void srgbMatchesPublishedOKLabValues_data() {
        QTest::addColumn<int>("hex");
        QTest::addColumn<double>("L");
        QTest::addColumn<double>("a");
        QTest::addColumn<double>("b");
        QTest::newRow("red") << 0xFF0000 << 0.6279553606 << 0.2248630611 << 0.1258462985;
        QTest::newRow("green") << 0x00FF00 << 0.8664396115 << -0.2338875742 << 0.1794984799;
        QTest::newRow("blue") << 0x0000FF << 0.4520137184 << -0.0324569842 << -0.3115281477;
        QTest::newRow("mid grey") << 0x808080 << 0.5998708017 << 0.0 << 0.0;
        QTest::newRow("brick") << 0xC73B4A << 0.5619829937 << 0.1661867183 << 0.0573058183;
    }
    void srgbMatchesPublishedOKLabValues() {
        QFETCH(int, hex);
        QFETCH(double, L);
        QFETCH(double, a);
        QFETCH(double, b);
        const RGB srgb{((hex >> 16) & 0xFF) / 255.0, ((hex >> 8) & 0xFF) / 255.0,
                       (hex & 0xFF) / 255.0};
        const OKLab lab = srgbToOklab(srgb);
        QVERIFY2(near(lab.L, L, 1e-4), qPrintable(QString::number(lab.L, 'g', 10)));
        QVERIFY2(near(lab.a, a, 1e-4), qPrintable(QString::number(lab.a, 'g', 10)));
        QVERIFY2(near(lab.b, b, 1e-4), qPrintable(QString::number(lab.b, 'g', 10)));

        // And back: the inverse matrices and the gamma return the same sRGB.
        const RGB lin = oklabToLinearSrgb({L, a, b});
        QVERIFY(near(linearToSrgb(std::clamp(lin.r, 0.0, 1.0)), srgb.r, 1e-4));
        QVERIFY(near(linearToSrgb(std::clamp(lin.g, 0.0, 1.0)), srgb.g, 1e-4));
        QVERIFY(near(linearToSrgb(std::clamp(lin.b, 0.0, 1.0)), srgb.b, 1e-4));
    }

    void hsbConvertsBySextant_data() {
        QTest::addColumn<double>("h");
        QTest::addColumn<double>("s");
        QTest::addColumn<double>("v");
        QTest::addColumn<double>("r");
        QTest::addColumn<double>("g");
        QTest::addColumn<double>("b");
        QTest::newRow("red") << 0.0 << 1.0 << 1.0 << 1.0 << 0.0 << 0.0;
        QTest::newRow("yellow") << 1.0 / 6 << 1.0 << 1.0 << 1.0 << 1.0 << 0.0;
        QTest::newRow("green") << 2.0 / 6 << 1.0 << 1.0 << 0.0 << 1.0 << 0.0;
        QTest::newRow("cyan") << 3.0 / 6 << 1.0 << 1.0 << 0.0 << 1.0 << 1.0;
        QTest::newRow("blue") << 4.0 / 6 << 1.0 << 1.0 << 0.0 << 0.0 << 1.0;
        QTest::newRow("magenta") << 5.0 / 6 << 1.0 << 1.0 << 1.0 << 0.0 << 1.0;
        QTest::newRow("orange, half bright") << 1.0 / 12 << 1.0 << 0.5 << 0.5 << 0.25 << 0.0;
        QTest::newRow("negative hue wraps") << -1.0 / 6 << 1.0 << 1.0 << 1.0 << 0.0 << 1.0;
    }
    void hsbConvertsBySextant() {
        QFETCH(double, h);
        QFETCH(double, s);
        QFETCH(double, v);
        QFETCH(double, r);
        QFETCH(double, g);
        QFETCH(double, b);
        const RGB rgb = hsbToRgb({h, s, v});
        QVERIFY(near(rgb.r, r, 1e-9) && near(rgb.g, g, 1e-9) && near(rgb.b, b, 1e-9));
        if (h >= 0 && h < 1) {
            const HSB back = rgbToHsb(rgb);
            QVERIFY(near(back.h, h, 1e-9) && near(back.s, s, 1e-9) && near(back.b, v, 1e-9));
        }
    }

    void blendTakesTheShortWayRound_data() {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addColumn<double>("e");
        QTest::addColumn<double>("hue");
        QTest::newRow("plain") << 0.1 << 0.3 << 0.5 << 0.2;
        QTest::newRow("across one, upwards") << 0.95 << 0.05 << 0.5 << 0.0;
        QTest::newRow("across zero, downwards") << 0.1 << 0.9 << 0.25 << 0.05;
        QTest::newRow("across zero, wraps below") << 0.1 << 0.9 << 0.75 << 0.95;
        QTest::newRow("end lands on target") << 0.95 << 0.05 << 1.0 << 0.05;
    }
    void blendTakesTheShortWayRound() {
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(double, e);
        QFETCH(double, hue);
        const HSB mixed = blend({from, 0.2, 1.0}, {to, 0.6, 0.5}, e);
        QVERIFY2(hueGap(mixed.h, hue) < 1e-9, qPrintable(QString::number(mixed.h)));
        QVERIFY(mixed.h >= 0 && mixed.h < 1);
        QVERIFY(near(mixed.s, 0.2 + 0.4 * e, 1e-12));
        QVERIFY(near(mixed.b, 1.0 - 0.5 * e, 1e-12));
    }

    void liftKeepsColoursVisibleAndCalm_data() {
        QTest::addColumn<double>("h");
        QTest::addColumn<double>("s");
        QTest::addColumn<double>("b");
        QTest::newRow("black") << 0.0 << 0.0 << 0.0;
        QTest::newRow("dark navy") << 0.62 << 0.9 << 0.2;
        QTest::newRow("pure red") << 0.0 << 1.0 << 1.0;
        QTest::newRow("white") << 0.0 << 0.0 << 1.0;
        QTest::newRow("muted olive") << 0.17 << 0.4 << 0.5;
    }
    void liftKeepsColoursVisibleAndCalm() {
        QFETCH(double, h);
        QFETCH(double, s);
        QFETCH(double, b);
        const OKLCH before = toOklch(hsbToOklab({h, s, b}));
        const OKLCH after = toOklch(hsbToOklab(liftColour({h, s, b})));
        // Lightness within 0.66...0.92 and chroma at most 0.18, allowing for the gamut clamp.
        QVERIFY2(after.L > 0.655 && after.L < 0.925, qPrintable(QString::number(after.L)));
        QVERIFY2(after.C < 0.185, qPrintable(QString::number(after.C)));
        if (before.C > 0.03) {
            const double gap = std::abs(std::remainder(after.h - before.h, 360.0));
            QVERIFY2(gap < 6.0, qPrintable(QString::number(gap)));
        }
    }

    void rampRunsFromFirstToLastStop() {
        const Palette palette{{0.0, 0.8, 0.9}, {0.15, 0.7, 0.9}, {0.55, 0.6, 0.8}, {0.7, 0.7, 0.9}};
        const Palette ramp = makeRamp(palette, 96);
        QCOMPARE(ramp.size(), 96);
        const auto same = [](const HSB& x, const HSB& y) {
            return distance(hsbToOklab(x), hsbToOklab(y)) < 2e-3;
        };
        QVERIFY(same(ramp.first(), palette.first()));
        QVERIFY(same(ramp.last(), palette.last()));
        // Each interior stop sits exactly at a segment boundary: index 95 x k / 3.
        const Palette exact = makeRamp(palette, 4);
        QVERIFY(same(exact[1], palette[1]));
        QVERIFY(same(exact[2], palette[2]));
    }
};

QTEST_APPLESS_MAIN(tst_Colour)
#include "tst_Colour.moc"
