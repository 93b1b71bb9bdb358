#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/LookTypes.h"
#include "look/OKLab.h"
#include "look/Ramp.h"
#include "look/Theme.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <memory>

using namespace MirlPlayer;

namespace {

constexpr double K = 0.6135525173611112;

bool near(double a, double b, double tolerance = 1e-9) {
    return std::abs(a - b) <= tolerance;
}

// A preferences file in a private folder, optionally with hand-written contents, as an older
// version or a user's edit would leave it.
struct Fixture {
    QTemporaryDir dir;
    ManualClock clock;
    std::unique_ptr<Preferences> prefs;

    explicit Fixture(const QByteArray& ini = {}) {
        const QString path = dir.filePath(QStringLiteral("preferences.conf"));
        if (!ini.isEmpty()) {
            QFile f(path);
            if (f.open(QIODevice::WriteOnly))
                f.write("[General]\n" + ini + "\n");
        }
        prefs = std::make_unique<Preferences>(path);
    }
    std::unique_ptr<Theme> theme() { return std::make_unique<Theme>(*prefs, clock); }
    // A fresh reader of the same file, as the next start of the program would see it.
    std::unique_ptr<Preferences> reread() {
        return std::make_unique<Preferences>(prefs->filePath());
    }
};

const Palette kWarm{{0.02, 0.7, 0.9}, {0.06, 0.6, 0.95}, {0.1, 0.5, 0.9}, {0.13, 0.6, 0.85}};
const Palette kCool{{0.55, 0.6, 0.9}, {0.6, 0.7, 0.9}, {0.66, 0.5, 0.95}, {0.7, 0.6, 0.8}};

} // namespace

class tst_Theme : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void backgroundIsMigratedFromTheOldGlassSwitch_data() {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<QString>("background");
        QTest::newRow("stored id wins")
            << QByteArray("backgroundStyleID=solid\nglassBackground=true") << "solid";
        QTest::newRow("old glass on") << QByteArray("glassBackground=true") << "frosted";
        QTest::newRow("old glass off") << QByteArray("glassBackground=false") << "solid";
        QTest::newRow("neither key") << QByteArray() << "frosted";
    }
    void backgroundIsMigratedFromTheOldGlassSwitch() {
        QFETCH(QByteArray, ini);
        QFETCH(QString, background);
        Fixture f(ini);
        QCOMPARE(f.theme()->backgroundStyleID(), background);
    }

    void glassDensityIsMigratedOnce_data() {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<double>("frosted");
        QTest::addColumn<double>("liquid");
        const double x0 = 0.05; // the tint floor
        const double xHalf = std::pow(0.5 / 0.92, 1.0 / 2.2);
        QTest::newRow("nothing stored") << QByteArray() << 0.5 << 0.5;
        QTest::newRow("current version keeps the slider")
            << QByteArray("glassDensityVersion=2\nglassOpacity=0.3\nglassTint=0.9") << 0.3 << 0.3;
        QTest::newRow("current version clamps")
            << QByteArray("glassDensityVersion=2\nglassOpacity=1.7") << 1.0 << 1.0;
        QTest::newRow("old alpha below the middle")
            << QByteArray("glassOpacity=0.3") << 0.5 * 0.3 / K << 0.5 * 0.3 / K;
        QTest::newRow("old alpha above the middle")
            << QByteArray("glassDensityVersion=1\nglassOpacity=0.8")
            << 0.5 + 0.5 * (0.8 - K) / (1 - K) << 0.5 + 0.5 * (0.8 - K) / (1 - K);
        QTest::newRow("tint 0 migrates through the floor")
            << QByteArray("glassTint=0") << 0.5 * x0 / K << 0.5 * x0 / K;
        QTest::newRow("tint half")
            << QByteArray("glassTint=0.5") << 0.5 + 0.5 * (xHalf - K) / (1 - K)
            << 0.5 + 0.5 * (xHalf - K) / (1 - K);
        QTest::newRow("own slider values win")
            << QByteArray("glassTint=0\nfrostedGlassOpacity=0.7\nliquidGlassOpacity=0.2") << 0.7
            << 0.2;
        QTest::newRow("own slider not finite")
            << QByteArray("frostedGlassOpacity=nan\nglassTint=0.92") << 0.5 << 1.0;
    }
    void glassDensityIsMigratedOnce() {
        QFETCH(QByteArray, ini);
        QFETCH(double, frosted);
        QFETCH(double, liquid);
        Fixture f(ini);
        {
            auto theme = f.theme();
            QVERIFY2(near(theme->frostedGlassOpacity(), frosted, 1e-12),
                     qPrintable(QString::number(theme->frostedGlassOpacity(), 'g', 17)));
            QVERIFY(near(theme->liquidGlassOpacity(), liquid, 1e-12));
        }
        auto stored = f.reread();
        QCOMPARE(stored->intValue("glassDensityVersion", 0), 2);
        QVERIFY(near(stored->doubleValue("frostedGlassOpacity", -1), frosted, 1e-12));
        QVERIFY(near(stored->doubleValue("liquidGlassOpacity", -1), liquid, 1e-12));
        // A second start reads the migrated density and does not migrate again.
        const double migrated = std::clamp(stored->doubleValue("glassOpacity", 0.5), 0.0, 1.0);
        Preferences again(f.prefs->filePath());
        again.remove("frostedGlassOpacity");
        again.remove("liquidGlassOpacity");
        Theme second(again, f.clock);
        QVERIFY(near(second.frostedGlassOpacity(), migrated, 1e-12));
    }

    void startUpValuesAreValidated_data() {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<double>("motionSpeed");
        QTest::addColumn<QList<double>>("customHSB");
        const QList<double> fallback{0.5, 0.12, 1.0};
        QTest::newRow("too fast") << QByteArray("motionSpeed=3.0") << 2.0 << fallback;
        QTest::newRow("not a number") << QByteArray("motionSpeed=brisk") << 1.0 << fallback;
        QTest::newRow("custom colour")
            << QByteArray("customHSB=0.3, 0.5, 0.7") << 1.0 << QList<double>{0.3, 0.5, 0.7};
        QTest::newRow("custom colour with text")
            << QByteArray("customHSB=0.3, teal, 0.7") << 1.0 << fallback;
        QTest::newRow("custom colour not a list") << QByteArray("customHSB=0.3") << 1.0 << fallback;
    }
    void startUpValuesAreValidated() {
        QFETCH(QByteArray, ini);
        QFETCH(double, motionSpeed);
        QFETCH(QList<double>, customHSB);
        Fixture f(ini);
        auto theme = f.theme();
        QCOMPARE(theme->motionSpeed(), motionSpeed);
        QCOMPARE(theme->customHSB(), (HSB{customHSB[0], customHSB[1], customHSB[2]}));
    }

    void lastPresetSurvivesTheAlbumColoursAcrossRestarts() {
        Fixture f;
        {
            auto theme = f.theme();
            theme->setCurrentID("ocean");
            theme->setAlbumColours(true);
            QCOMPARE(theme->currentID(), QStringLiteral("album"));
            QCOMPARE(f.reread()->stringValue("lastFixedSkinID"), QStringLiteral("ocean"));
        }
        auto theme = f.theme();
        QVERIFY(theme->albumColours());
        theme->setAlbumColours(false);
        QCOMPARE(theme->currentID(), QStringLiteral("ocean"));
        QCOMPARE(f.reread()->stringValue("skinID"), QStringLiteral("ocean"));

        // With no preset ever chosen, turning album colours off gives the custom colour.
        Fixture fresh("skinID=album");
        auto other = fresh.theme();
        other->setAlbumColours(false);
        QCOMPARE(other->currentID(), QStringLiteral("custom"));
    }

    void needsAudioFollowsVisualizerAndEdgeLight_data() {
        QTest::addColumn<bool>("show");
        QTest::addColumn<bool>("edge");
        QTest::addColumn<QString>("background");
        QTest::addColumn<bool>("needs");
        QTest::newRow("visualizer shown") << true << false << "solid" << true;
        QTest::newRow("no visualizer, no edge light") << false << false << "frosted" << false;
        QTest::newRow("edge light on frosted") << false << true << "frosted" << true;
        QTest::newRow("edge light on solid") << false << true << "solid" << false;
        QTest::newRow("liquid is not offered, counts as frosted")
            << false << true << "liquid" << true;
        QTest::newRow("unknown counts as frosted") << false << true << "velvet" << true;
    }
    void needsAudioFollowsVisualizerAndEdgeLight() {
        QFETCH(bool, show);
        QFETCH(bool, edge);
        QFETCH(QString, background);
        QFETCH(bool, needs);
        QCOMPARE(Theme::needsAudioFor(show, edge, background), needs);
        Fixture f;
        auto theme = f.theme();
        QSignalSpy spy(theme.get(), &Theme::needsAudioChanged);
        theme->setShowVisualizer(show);
        theme->setEdgeReflection(edge);
        theme->setBackgroundStyleID(background);
        QCOMPARE(theme->needsAudio(), needs);
        QCOMPARE(spy.count(), needs ? 0 : 1);
    }

    void glassSliderMapsToDensityAndBlur_data() {
        QTest::addColumn<double>("slider");
        QTest::addColumn<double>("density");
        QTest::addColumn<double>("blur");
        QTest::newRow("clear") << 0.0 << 0.0 << 0.55;
        QTest::newRow("middle is the old default") << 0.5 << K << K * 1.6;
        QTest::newRow("full") << 1.0 << 1.0 << 1.0;
        QTest::newRow("beyond full clamps") << 1.4 << 1.0 << 1.0;
    }
    void glassSliderMapsToDensityAndBlur() {
        QFETCH(double, slider);
        QFETCH(double, density);
        QFETCH(double, blur);
        Fixture f;
        auto theme = f.theme();
        theme->setCurrentGlassOpacity(slider);                         // the background is frosted
        QCOMPARE(theme->frostedGlassOpacity(), std::min(slider, 1.0)); // stored clamped
        QVERIFY(near(theme->frostedDensity(), density, 1e-12));
        QVERIFY(near(theme->frostedBlurStrength(), blur, 1e-12));
        // Under the liquid background the same slider moves the liquid glass alone.
        theme->setBackgroundStyleID(QStringLiteral("liquid"));
        theme->setCurrentGlassOpacity(0.25);
        QCOMPARE(theme->liquidGlassOpacity(), 0.25);
        QVERIFY(near(theme->frostedDensity(), density, 1e-12));
    }

    // A switch is stored, and announced only when it changes.
    void glassReflectionIsStoredAndAnnouncedOnChange() {
        Fixture f;
        auto theme = f.theme();
        QSignalSpy spy(theme.get(), &Theme::glassReflectionChanged);
        theme->setGlassReflection(true); // the default
        theme->setGlassReflection(false);
        theme->setGlassReflection(false);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(f.reread()->boolValue("glassReflection", true), false);
    }

    void fixedColoursSweepAroundTheSkinHue_data() {
        QTest::addColumn<double>("t");
        QTest::addColumn<double>("hue");
        QTest::newRow("lows") << 0.0 << 0.67;
        QTest::newRow("middle") << 0.5 << 0.6;
        QTest::newRow("highs") << 1.0 << 0.53;
        QTest::newRow("below the lows is not clamped") << -1.0 << 0.81;
    }
    void fixedColoursSweepAroundTheSkinHue() {
        QFETCH(double, t);
        QFETCH(double, hue);
        Fixture f("skinID=ocean");
        auto theme = f.theme();
        const HSB c = theme->colorAt(std::nullopt, t);
        QVERIFY(near(c.h, hue, 1e-12));
        QVERIFY(near(c.s, 0.85 / 0.95, 1e-12));
        QCOMPARE(c.b, 1.0);
        QVERIFY(near(theme->colorAt(0.2, t).h, hue - 0.6 + 0.2, 1e-12));
    }

    void albumColoursReadTheRampOfTheCover() {
        // Kept quietly under a fixed preset, the cover's palette is shown at once when the
        // album colours are turned on: no glide, one announcement.
        Fixture f("skinID=ocean");
        auto theme = f.theme();
        QSignalSpy announced(theme.get(), &Theme::artPaletteChanged);
        theme->setArtPalette(kWarm);
        QCOMPARE(announced.count(), 0);
        QVERIFY(near(theme->colorAt(std::nullopt, 0.0).h, 0.67)); // still the preset's sweep
        theme->setAlbumColours(true);
        QVERIFY(!theme->isGliding());
        QCOMPARE(*theme->artPalette(), kWarm);
        HSB mid = makeRamp(kWarm, PaletteGlide::rampSize)[48];
        mid.s = std::min(mid.s / 0.95, 1.0);
        QCOMPARE(theme->colorAt(std::nullopt, 0.5), mid);
        QCOMPARE(theme->colorAt(std::nullopt, 7.0), theme->colorAt(std::nullopt, 1.0));

        // The same cover again neither glides nor announces; another one glides, announced
        // only when it settles.
        theme->setArtPalette(kWarm);
        QVERIFY(!theme->isGliding());
        theme->setArtPalette(kCool);
        QVERIFY(theme->isGliding());
        QCOMPARE(announced.count(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_Theme)
#include "tst_Theme.moc"
