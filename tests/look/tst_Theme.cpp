#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/LookTypes.h"
#include "look/OKLab.h"
#include "look/Ramp.h"
#include "look/Theme.h"

#include <QFile>
#include <QQmlComponent>
#include <QQmlEngine>
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

// Equal up to the rounding of clock arithmetic.
bool sameColour(const HSB& x, const HSB& y) {
    return near(x.h, y.h) && near(x.s, y.s) && near(x.b, y.b);
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
    void freshInstallHasTheShippedLook() {
        Fixture f;
        auto theme = f.theme();
        QCOMPARE(theme->backgroundStyleID(), QStringLiteral("frosted"));
        QCOMPARE(theme->currentID(), QStringLiteral("custom"));
        QCOMPARE(theme->customHSB(), (HSB{0.5, 0.12, 1.0}));
        QCOMPARE(theme->currentSkin().name, QStringLiteral("Custom"));
        QCOMPARE(theme->inkID(), QStringLiteral("auto"));
        QCOMPARE(theme->positionID(), QStringLiteral("right"));
        QCOMPARE(theme->vizID(), QStringLiteral("mirror"));
        QCOMPARE(theme->styleID(), QStringLiteral("apple"));
        QCOMPARE(theme->motionSpeed(), 1.0);
        QCOMPARE(theme->glow(), 0.6);
        QVERIFY(theme->showVisualizer() && theme->glassReflection() && theme->edgeReflection());
        QCOMPARE(theme->frostedGlassOpacity(), 0.5);
        QCOMPARE(theme->liquidGlassOpacity(), 0.5);
        QVERIFY(!theme->artPalette() && !theme->lastArtwork() && !theme->isGliding());
        // The density migration has run and the opacities are written back.
        auto stored = f.reread();
        QCOMPARE(stored->intValue("glassDensityVersion", 0), 2);
        QCOMPARE(stored->doubleValue("glassOpacity", -1), 0.5);
        QCOMPARE(stored->doubleValue("frostedGlassOpacity", -1), 0.5);
        QCOMPARE(stored->doubleValue("liquidGlassOpacity", -1), 0.5);
        QVERIFY(!stored->contains("skinID"));
    }

    void backgroundIsMigratedFromTheOldGlassSwitch_data() {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<QString>("background");
        QTest::newRow("stored id wins")
            << QByteArray("backgroundStyleID=solid\nglassBackground=true") << "solid";
        QTest::newRow("old glass on") << QByteArray("glassBackground=true") << "frosted";
        QTest::newRow("old glass off") << QByteArray("glassBackground=false") << "solid";
        QTest::newRow("old key not a Bool") << QByteArray("glassBackground=sometimes") << "frosted";
        QTest::newRow("neither key") << QByteArray() << "frosted";
        QTest::newRow("liquid is kept as stored")
            << QByteArray("backgroundStyleID=liquid") << "liquid";
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
        QTest::newRow("current version without value")
            << QByteArray("glassDensityVersion=2\nglassTint=0.1") << 0.5 << 0.5;
        QTest::newRow("old alpha at the middle density")
            << QByteArray("glassOpacity=0.6135525173611112") << 0.5 << 0.5;
        QTest::newRow("old alpha below the middle")
            << QByteArray("glassOpacity=0.3") << 0.5 * 0.3 / K << 0.5 * 0.3 / K;
        QTest::newRow("old alpha above the middle")
            << QByteArray("glassDensityVersion=1\nglassOpacity=0.8")
            << 0.5 + 0.5 * (0.8 - K) / (1 - K) << 0.5 + 0.5 * (0.8 - K) / (1 - K);
        QTest::newRow("old alpha beats old tint")
            << QByteArray("glassOpacity=1\nglassTint=0") << 1.0 << 1.0;
        QTest::newRow("tint 0 migrates through the floor")
            << QByteArray("glassTint=0") << 0.5 * x0 / K << 0.5 * x0 / K;
        QTest::newRow("tint at full") << QByteArray("glassTint=0.92") << 1.0 << 1.0;
        QTest::newRow("tint half")
            << QByteArray("glassTint=0.5") << 0.5 + 0.5 * (xHalf - K) / (1 - K)
            << 0.5 + 0.5 * (xHalf - K) / (1 - K);
        QTest::newRow("tint not a number") << QByteArray("glassTint=thick") << 0.5 << 0.5;
        QTest::newRow("own slider values win")
            << QByteArray("glassTint=0\nfrostedGlassOpacity=0.7\nliquidGlassOpacity=0.2") << 0.7
            << 0.2;
        QTest::newRow("own slider out of range")
            << QByteArray("frostedGlassOpacity=-3") << 0.0 << 0.5;
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
        QTest::newRow("too slow") << QByteArray("motionSpeed=0.1") << 0.5 << fallback;
        QTest::newRow("in range") << QByteArray("motionSpeed=1.3") << 1.3 << fallback;
        QTest::newRow("not a number") << QByteArray("motionSpeed=brisk") << 1.0 << fallback;
        QTest::newRow("custom colour")
            << QByteArray("customHSB=0.3, 0.5, 0.7") << 1.0 << QList<double>{0.3, 0.5, 0.7};
        QTest::newRow("custom colour with text")
            << QByteArray("customHSB=0.3, teal, 0.7") << 1.0 << fallback;
        QTest::newRow("custom colour too short")
            << QByteArray("customHSB=0.3, 0.5") << 1.0 << fallback;
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

    void everySettingPersistsAndAnnouncesOnlyChanges_data() {
        QTest::addColumn<QByteArray>("property");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("background") << QByteArray("backgroundStyleID") << "backgroundStyleID"
                                    << QVariant(QStringLiteral("solid"));
        QTest::newRow("frosted") << QByteArray("frostedGlassOpacity") << "frostedGlassOpacity"
                                 << QVariant(0.25);
        QTest::newRow("liquid") << QByteArray("liquidGlassOpacity") << "liquidGlassOpacity"
                                << QVariant(0.75);
        QTest::newRow("glass reflection")
            << QByteArray("glassReflection") << "glassReflection" << QVariant(false);
        QTest::newRow("edge reflection")
            << QByteArray("edgeReflection") << "edgeReflection" << QVariant(false);
        QTest::newRow("skin") << QByteArray("currentID") << "skinID"
                              << QVariant(QStringLiteral("ocean"));
        QTest::newRow("ink") << QByteArray("inkID") << "inkID" << QVariant(QStringLiteral("black"));
        QTest::newRow("position") << QByteArray("positionID") << "positionID"
                                  << QVariant(QStringLiteral("notch"));
        QTest::newRow("visualizer")
            << QByteArray("vizID") << "vizID" << QVariant(QStringLiteral("bars"));
        QTest::newRow("show visualizer")
            << QByteArray("showVisualizer") << "showVisualizer" << QVariant(false);
        QTest::newRow("motion speed")
            << QByteArray("motionSpeed") << "motionSpeed" << QVariant(1.5);
        QTest::newRow("style") << QByteArray("styleID") << "styleID"
                               << QVariant(QStringLiteral("cassette"));
        QTest::newRow("glow") << QByteArray("glow") << "glow" << QVariant(0.9);
        QTest::newRow("custom colour") << QByteArray("customHSB") << "customHSB"
                                       << QVariant::fromValue(QList<double>{0.1, 0.4, 0.8});
    }
    void everySettingPersistsAndAnnouncesOnlyChanges() {
        QFETCH(QByteArray, property);
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        Fixture f;
        auto theme = f.theme();
        const QMetaProperty meta =
            theme->metaObject()->property(theme->metaObject()->indexOfProperty(property));
        QSignalSpy spy(theme.get(), meta.notifySignal());
        QVERIFY(theme->setProperty(property, value));
        QCOMPARE(spy.count(), 1);
        QVERIFY(theme->setProperty(property, value));
        QCOMPARE(spy.count(), 1);
        QVERIFY(f.reread()->contains(key));
        Theme next(*f.reread(), f.clock);
        QCOMPARE(next.property(property), value);
    }

    void unknownSkinShowsTheFirstPresetWithoutRewriting() {
        Fixture f("skinID=plaid");
        auto theme = f.theme();
        QCOMPARE(theme->currentSkin().name, QStringLiteral("Matrix"));
        QCOMPARE(theme->currentID(), QStringLiteral("plaid"));
        QCOMPARE(f.reread()->stringValue("skinID"), QStringLiteral("plaid"));
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
        QTest::newRow("quarter") << 0.25 << 0.5 * K << 0.5 * 0.4316840277777778 + 0.55;
        QTest::newRow("middle is the old default") << 0.5 << K << K * 1.6;
        QTest::newRow("three quarters") << 0.75 << 0.5 * 0.38644748263888884 + K << 1.0;
        QTest::newRow("full") << 1.0 << 1.0 << 1.0;
        QTest::newRow("beyond full clamps") << 1.4 << 1.0 << 1.0;
    }
    void glassSliderMapsToDensityAndBlur() {
        QFETCH(double, slider);
        QFETCH(double, density);
        QFETCH(double, blur);
        Fixture f;
        auto theme = f.theme();
        theme->setFrostedGlassOpacity(slider);
        QVERIFY(near(theme->frostedDensity(), density, 1e-12));
        QVERIFY(near(theme->frostedBlurStrength(), blur, 1e-12));
    }

    void currentGlassOpacityWritesTheVisibleMaterial() {
        Fixture f;
        auto theme = f.theme();
        theme->setCurrentGlassOpacity(0.8);
        QCOMPARE(theme->frostedGlassOpacity(), 0.8);
        QCOMPARE(theme->liquidGlassOpacity(), 0.5);
        theme->setBackgroundStyleID("liquid");
        QCOMPARE(theme->currentGlassOpacity(), 0.5);
        theme->setCurrentGlassOpacity(std::nan(""));
        QCOMPARE(theme->liquidGlassOpacity(), 0.5);
        theme->setCurrentGlassOpacity(-2);
        QCOMPARE(theme->liquidGlassOpacity(), 0.0);
        QCOMPARE(theme->frostedGlassOpacity(), 0.8);
    }

    void pickedCustomColourNeverVanishes_data() {
        QTest::addColumn<QColor>("picked");
        QTest::addColumn<double>("hue");
        QTest::addColumn<double>("sat");
        QTest::addColumn<double>("bri");
        QTest::newRow("vivid") << QColor::fromRgbF(1, 0.5, 0) << 1.0 / 12 << 1.0 << 1.0;
        QTest::newRow("grey gets some colour")
            << QColor::fromRgbF(0.5, 0.5, 0.5) << 0.0 << 0.12 << 0.5;
        QTest::newRow("black gets some light") << QColor(Qt::black) << 0.0 << 0.12 << 0.35;
        QTest::newRow("invalid reads as white") << QColor() << 0.0 << 0.12 << 1.0;
        QTest::newRow("other colour models") << QColor::fromCmykF(0, 1, 1, 0) << 0.0 << 1.0 << 1.0;
    }
    void pickedCustomColourNeverVanishes() {
        QFETCH(QColor, picked);
        QFETCH(double, hue);
        QFETCH(double, sat);
        QFETCH(double, bri);
        Fixture f("skinID=ocean");
        auto theme = f.theme();
        theme->setCustomColor(picked);
        // QColor keeps 16 bits per channel.
        QVERIFY(near(theme->customHSB().h, hue, 1e-4));
        QVERIFY(near(theme->customHSB().s, sat, 1e-4));
        QVERIFY(near(theme->customHSB().b, bri, 1e-4));
        QCOMPARE(theme->currentID(), QStringLiteral("custom"));
        QCOMPARE(f.reread()->stringValue("skinID"), QStringLiteral("custom"));
    }

    void inkColourFollowsItsChoice_data() {
        QTest::addColumn<QString>("ink");
        QTest::addColumn<QString>("skin");
        QTest::addColumn<QColor>("colour");
        const QColor sky = skinWithID("sky")->color();
        QTest::newRow("white") << "white"
                               << "sky" << QColor(Qt::white);
        QTest::newRow("black") << "black"
                               << "album" << QColor(Qt::black);
        QTest::newRow("a preset") << "ocean"
                                  << "sky" << skinWithID("ocean")->color();
        QTest::newRow("auto follows the skin") << "auto"
                                               << "sky" << sky;
        QTest::newRow("auto is white over album colours") << "auto"
                                                          << "album" << QColor(Qt::white);
        QTest::newRow("unknown behaves as auto") << "tartan"
                                                 << "sky" << sky;
    }
    void inkColourFollowsItsChoice() {
        QFETCH(QString, ink);
        QFETCH(QString, skin);
        QFETCH(QColor, colour);
        Fixture f;
        auto theme = f.theme();
        theme->setCurrentID(skin);
        theme->setInkID(ink);
        QCOMPARE(theme->inkColor(), colour);
    }

    void inkChoicesListAutoWhiteBlackThenPresets() {
        Fixture f("skinID=rose");
        const QVariantList rows = f.theme()->inkChoices();
        QCOMPARE(rows.size(), 3 + 13);
        QCOMPARE(rows[0].toMap().value("name").toString(), QStringLiteral("Auto"));
        QCOMPARE(rows[0].toMap().value("color").value<QColor>(), skinWithID("rose")->color());
        QCOMPARE(rows[2].toMap().value("id").toString(), QStringLiteral("black"));
        QCOMPARE(rows[3].toMap().value("name").toString(), QStringLiteral("Matrix"));
        QCOMPARE(rows.last().toMap().value("id").toString(), QStringLiteral("ice"));
    }

    void motionIsShortenedByTheSpeed() {
        Fixture f("motionSpeed=2");
        auto theme = f.theme();
        const Theme::Motion m = theme->motion(0.4, 0.1);
        QCOMPARE(m.duration, 0.2);
        QCOMPARE(m.delay, 0.05);
        QVERIFY(m.easing.valueForProgress(0.5) > 0.5); // eases out
        QCOMPARE(theme->motionMs(0.3), 150);
    }

    void fixedColoursSweepAroundTheSkinHue_data() {
        QTest::addColumn<double>("t");
        QTest::addColumn<double>("hue");
        QTest::newRow("lows") << 0.0 << 0.67;
        QTest::newRow("middle") << 0.5 << 0.6;
        QTest::newRow("highs") << 1.0 << 0.53;
        QTest::newRow("beyond the highs is not clamped") << 1.5 << 0.46;
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

    void albumRampClampsAndFollowsThePalette() {
        Fixture f("skinID=album");
        auto theme = f.theme();
        theme->setArtPalette(kWarm);
        f.clock.advance(1.0);
        theme->stepGlide();
        QCOMPARE(*theme->artPalette(), kWarm);
        const HSB low = theme->colorAt(std::nullopt, 0.0);
        QCOMPARE(theme->colorAt(std::nullopt, -3.0), low);
        QCOMPARE(theme->colorAt(std::nullopt, 7.0), theme->colorAt(std::nullopt, 1.0));
        QVERIFY(distance(hsbToOklab({low.h, low.s * 0.95, low.b}), hsbToOklab(kWarm[0])) < 2e-3);
        QCOMPARE(theme->colorAt(std::nullopt, 0.5), [] {
            HSB c = makeRamp(kWarm, 96)[48];
            c.s = std::min(c.s / 0.95, 1.0);
            return c;
        }());

        // A new palette rebuilds the ramp on the next lookup.
        theme->setArtPalette(kCool);
        f.clock.advance(1.0);
        theme->stepGlide();
        QVERIFY(distance(hsbToOklab(theme->colorAt(std::nullopt, 0.0)), hsbToOklab(low)) > 0.05);
    }

    void oneColourPaletteSweepsNarrowly() {
        Fixture f("skinID=album");
        auto theme = f.theme();
        theme->setArtPalette(Palette{{0.3, 0.5, 0.8}});
        f.clock.advance(1.0);
        theme->stepGlide();
        const HSB lows = theme->colorAt(std::nullopt, 0.0);
        QVERIFY(near(lows.h, 0.325, 1e-12));
        QVERIFY(near(lows.s, 0.5 / 0.95, 1e-12));
        QVERIFY(near(theme->colorAt(std::nullopt, 1.0).h, 0.275, 1e-12));
    }

    void glideBlendsWithSmoothstepThenAnnouncesOnce_data() {
        QTest::addColumn<double>("elapsed");
        QTest::addColumn<double>("e");
        QTest::newRow("quarter way") << 0.225 << 0.15625;
        QTest::newRow("half way") << 0.45 << 0.5;
        QTest::newRow("three quarters") << 0.675 << 0.84375;
    }
    void glideBlendsWithSmoothstepThenAnnouncesOnce() {
        QFETCH(double, elapsed);
        QFETCH(double, e);
        Fixture f("skinID=album");
        auto theme = f.theme();
        QSignalSpy announced(theme.get(), &Theme::artPaletteChanged);
        QSignalSpy colours(theme.get(), &Theme::coloursChanged);

        // From nothing: the glide starts at the custom colour, repeated to four entries.
        const double start = f.clock.now();
        theme->setArtPalette(kWarm);
        QVERIFY(theme->isGliding());
        f.clock.advance(elapsed);
        theme->stepGlide();
        const Palette mid = *theme->artPalette();
        QCOMPARE(mid.size(), 4);
        for (int i = 0; i < 4; ++i) {
            QVERIFY(sameColour(mid[i], blend(theme->customHSB(), kWarm[i], e)));
        }
        QCOMPARE(announced.count(), 0);
        QCOMPARE(colours.count(), 0);

        f.clock.set(start + Theme::glideDuration);
        theme->stepGlide();
        QCOMPARE(*theme->artPalette(), kWarm);
        QCOMPARE(announced.count(), 1);
        QCOMPARE(colours.count(), 1);
        QVERIFY(!theme->isGliding());
        theme->stepGlide();
        QCOMPARE(announced.count(), 1);
    }

    void glideFromFourToOneColourEndsUnpadded() {
        Fixture f("skinID=album");
        auto theme = f.theme();
        theme->setArtPalette(kWarm);
        f.clock.advance(1.0);
        theme->stepGlide();
        theme->setArtPalette(std::nullopt);
        f.clock.advance(0.45);
        theme->stepGlide();
        QCOMPARE(theme->artPalette()->size(), 4);
        // No cover glides to white, keeping the first hue.
        QVERIFY(
            sameColour(theme->artPalette()->at(3), blend(kWarm[3], HSB{kWarm[0].h, 0, 1}, 0.5)));
        f.clock.advance(0.45);
        theme->stepGlide();
        QCOMPARE(*theme->artPalette(), (Palette{HSB{kWarm[0].h, 0, 1}}));
        QVERIFY(theme->isColourlessCover());
        QVERIFY(!theme->lastArtwork());
    }

    void samePaletteAgainNeitherGlidesNorAnnounces() {
        Fixture f("skinID=album");
        auto theme = f.theme();
        theme->setArtPalette(kWarm);
        f.clock.advance(1.0);
        theme->stepGlide();
        QSignalSpy announced(theme.get(), &Theme::artPaletteChanged);
        theme->setArtPalette(kWarm);
        QVERIFY(!theme->isGliding());
        QCOMPARE(announced.count(), 0);
        QCOMPARE(*theme->artPalette(), kWarm);
    }

    void newCoverDuringAGlideStartsFromWhereItIs() {
        Fixture f("skinID=album");
        auto theme = f.theme();
        theme->setArtPalette(kWarm);
        f.clock.advance(1.0);
        theme->stepGlide();
        theme->setArtPalette(kCool);
        f.clock.advance(0.45);
        theme->stepGlide();
        const Palette halfway = *theme->artPalette();
        theme->setArtPalette(kWarm);
        QVERIFY(theme->isGliding());
        f.clock.advance(0.0001);
        theme->stepGlide();
        QVERIFY(distance(hsbToOklab(theme->artPalette()->first()), hsbToOklab(halfway.first())) <
                1e-3);
    }

    void withFixedColoursThePaletteIsKeptQuietly() {
        Fixture f("skinID=sky");
        auto theme = f.theme();
        QSignalSpy announced(theme.get(), &Theme::artPaletteChanged);
        theme->setArtPalette(kCool);
        QVERIFY(!theme->isGliding());
        QCOMPARE(announced.count(), 0);
        QCOMPARE(*theme->artPalette(), kCool);
        QCOMPARE(*theme->lastArtwork(), kCool);
        // Switching to album colours finds it: no glide is needed.
        theme->setAlbumColours(true);
        QVERIFY(!theme->isGliding());
        QCOMPARE(theme->currentSkin().hsb(), kCool[0]);
        QVERIFY(!theme->isColourlessCover());
    }

    void noArtworkIsTheColourlessCaseOnlyWithAlbumColours() {
        Fixture f("skinID=sky");
        auto theme = f.theme();
        theme->setArtPalette(std::nullopt);
        QCOMPARE(*theme->artPalette(), (Palette{HSB{0.5, 0, 1}}));
        QVERIFY(!theme->isColourlessCover());
        theme->setCurrentID("album");
        QVERIFY(theme->isColourlessCover());
        const HSB c = theme->colorAt(std::nullopt, 0.3);
        QCOMPARE(c.s, 0.0);
        QCOMPARE(c.b, 1.0);
        // An empty palette is the same as none.
        theme->setArtPalette(Palette{});
        QVERIFY(!theme->lastArtwork());
    }

    void shaderRampIsNinetySixOpaqueColours() {
        Fixture f("skinID=ocean");
        auto theme = f.theme();
        const QList<QVector4D> ramp = theme->shaderRamp();
        QCOMPARE(ramp.size(), 96);
        QCOMPARE(theme->shaderRamp(-5, 500).size(), 96);
        QCOMPARE(theme->shaderRamp(90, 93).size(), 3);
        for (const QVector4D& c : ramp)
            QCOMPARE(c.w(), 1.0f);
        HSB lows = theme->colorAt(std::nullopt, 0.0);
        const RGB want = hsbToRgb({lows.h, std::min(lows.s * 0.95, 1.0), lows.b});
        QVERIFY(near(ramp[0].x(), want.r, 1e-6) && near(ramp[0].y(), want.g, 1e-6) &&
                near(ramp[0].z(), want.b, 1e-6));
        QVERIFY(ramp[0] != ramp[95]);
    }

    void qmlSeesTheThemeAsASingleton() {
        Fixture f("skinID=amber");
        auto theme = f.theme();
        registerLookTypes(*theme);
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQml\nimport MirlPlayer.Look 1.0\nQtObject {\n"
                          "  property string viz: Theme.vizID\n"
                          "  property string skin: Theme.currentSkin.name\n"
                          "  property bool audio: Theme.needsAudio\n"
                          "  property var ink: Theme.inkColor\n"
                          "}\n",
                          QUrl());
        std::unique_ptr<QObject> object(component.create());
        QVERIFY2(object, qPrintable(component.errorString()));
        QCOMPARE(object->property("viz").toString(), QStringLiteral("mirror"));
        QCOMPARE(object->property("skin").toString(), QStringLiteral("Amber"));
        QCOMPARE(object->property("audio").toBool(), true);
        theme->setVizID("bars");
        theme->setShowVisualizer(false);
        theme->setEdgeReflection(false);
        theme->setCurrentID("ice");
        QCOMPARE(object->property("viz").toString(), QStringLiteral("bars"));
        QCOMPARE(object->property("audio").toBool(), false);
        QCOMPARE(object->property("skin").toString(), QStringLiteral("Ice"));
        QCOMPARE(object->property("ink").value<QColor>(), skinWithID("ice")->color());
    }
};

QTEST_GUILESS_MAIN(tst_Theme)
#include "tst_Theme.moc"
