#include "core/Preferences.h"
#include "visualizers/VizConfig.h"

#include <QLocale>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <thread>

using namespace MirlPlayer;

class tst_VizConfig : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_files = 0;

    QString freshPath() { return m_dir.filePath(QString("p%1.conf").arg(++m_files)); }

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void catalogueHasThirtyTwoControlsWithDefaults() {
        const auto& controls = VizConfig::allControls();
        QCOMPARE(controls.size(), 32);
        QCOMPARE(controls.first().key, QStringLiteral("designHeight"));
        QCOMPARE(controls.last().key, QStringLiteral("edgeDiffuse"));
        for (const VizControl& c : controls) {
            const auto d = VizConfig::defaultValue(c.key);
            QVERIFY2(d.has_value(), qPrintable(c.key));
            QVERIFY2(*d >= c.min && *d <= c.max, qPrintable(c.key));
        }
    }

    void helpTextFallsBackToTheLabel_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("help");
        QTest::newRow("own text") << "sensitivity"
                                  << "How strongly the visualizer reacts to the music.";
        QTest::newRow("generic") << "barsRound"
                                 << "Rounding for the selected visualizer.";
        QTest::newRow("shared library text")
            << "edgeLibraryAmount"
            << "How bright the light is while the Spotify library is open.";
        QTest::newRow("edge diffusion shares the reflection's")
            << "edgeDiffuse"
            << "How far the light spreads: low is tight and bright, high is soft and wide.";
    }
    void helpTextFallsBackToTheLabel() {
        QFETCH(QString, key);
        QFETCH(QString, help);
        QCOMPARE(VizConfig::helpText(*VizConfig::control(key)), help);
    }

    void stylesListTheirOwnSlidersInCatalogueOrder() {
        const auto controls = VizConfig::controls(VizStyle::stereoAnalyzer);
        QStringList keys;
        for (const auto& c : controls)
            keys << c.key;
        QCOMPARE(keys, (QStringList{"anaSens", "anaDepth", "anaBloom", "anaGrid", "anaWidth",
                                    "anaHeight"}));
        QCOMPARE(VizConfig::controls(VizStyle::silk).first().label,
                 QStringLiteral("Spectrum height"));
    }

    void defaultsAreReadableFromAnyThread() {
        Preferences prefs(freshPath());
        VizConfig config(prefs);
        double seen = 0;
        double unknown = -1;
        std::thread reader([&] {
            seen = config.value("sensitivity");
            unknown = config.value("noSuchKey");
        });
        reader.join();
        QCOMPARE(seen, 1.53);
        QCOMPARE(unknown, 0.0);
    }

    void aSetValueReachesOtherThreadsAndTheStore() {
        Preferences prefs(freshPath());
        VizConfig config(prefs);
        QSignalSpy changed(&config, &VizConfig::valuesChanged);
        config.set("smoothing", 0.9);
        double seen = 0;
        std::thread reader([&] { seen = config.value("smoothing"); });
        reader.join();
        QCOMPARE(seen, 0.9);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(prefs.mapValue("vizConfig2").value("smoothing").toDouble(), 0.9);
        // The whole dictionary is stored, not just the moved key.
        QCOMPARE(prefs.mapValue("vizConfig2").size(), 32);

        config.set("smoothing", 0.9);
        QCOMPARE(changed.count(), 1);

        VizConfig reopened(prefs);
        QCOMPARE(reopened.value("smoothing"), 0.9);
    }

    void storedDictionaryIsTakenOrRejectedWhole_data() {
        QTest::addColumn<QVariantMap>("stored");
        QTest::addColumn<double>("sensitivity");
        QTest::addColumn<double>("smoothing");
        QTest::newRow("numbers replace defaults")
            << QVariantMap{{"sensitivity", 2.0}, {"smoothing", 0.5}} << 2.0 << 0.5;
        QTest::newRow("out of range is taken as it is")
            << QVariantMap{{"sensitivity", 9.0}} << 9.0 << 0.22;
        QTest::newRow("one string voids everything")
            << QVariantMap{{"sensitivity", "2.0"}, {"smoothing", 0.5}} << 1.53 << 0.22;
        QTest::newRow("retired keys are dropped")
            << QVariantMap{{"oldKnob", 3.0}, {"smoothing", 0.4}} << 1.53 << 0.4;
    }
    void storedDictionaryIsTakenOrRejectedWhole() {
        QFETCH(QVariantMap, stored);
        QFETCH(double, sensitivity);
        QFETCH(double, smoothing);
        Preferences prefs(freshPath());
        prefs.setValue("vizConfig2", stored);
        VizConfig config(prefs);
        QCOMPARE(config.value("sensitivity"), sensitivity);
        QCOMPARE(config.value("smoothing"), smoothing);
        QVERIFY(!config.values().contains("oldKnob"));
    }

    void aStoredValueThatIsNotADictionaryIsIgnored() {
        Preferences prefs(freshPath());
        prefs.setValue("vizConfig2", 4.0);
        VizConfig config(prefs);
        QCOMPARE(config.value("sensitivity"), 1.53);
    }

    void resetPutsDefaultsBackAndStoresOnce() {
        Preferences prefs(freshPath());
        VizConfig config(prefs);
        config.set("sensitivity", 2.0);
        config.set("smoothing", 0.7);
        QSignalSpy stored(&prefs, &Preferences::changed);
        config.reset({"sensitivity", "smoothing"});
        QCOMPARE(config.value("sensitivity"), 1.53);
        QCOMPARE(config.value("smoothing"), 0.22);
        QCOMPARE(stored.count(), 1);
        QCOMPARE(prefs.mapValue("vizConfig2").value("sensitivity").toDouble(), 1.53);
    }

    void sliderTextsFollowTheirRange_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("rounding in points") << "barsRound" << 1.5 << "1.5 pt";
        QTest::newRow("sensitivity as a factor") << "sensitivity" << 1.53 << "1.5×";
        QTest::newRow("unit range in percent") << "smoothing" << 0.22 << "22%";
        QTest::newRow("height in percent") << "mirrorHeight" << 0.5 << "50%";
        QTest::newRow("width beyond one in percent") << "anaWidth" << 1.6 << "160%";
        QTest::newRow("colour strength in percent") << "reflectColor" << 2.0 << "200%";
        QTest::newRow("depth as a factor") << "waterDepth" << 4.5 << "4.5×";
    }
    void sliderTextsFollowTheirRange() {
        QFETCH(QString, key);
        QFETCH(double, value);
        QFETCH(QString, text);
        QCOMPARE(VizConfig::format(*VizConfig::control(key), value), text);
    }

    void sliderTextsUseTheUsersLocale() {
        QLocale::setDefault(QLocale(QLocale::German));
        const QString text = VizConfig::format(*VizConfig::control("sensitivity"), 1.53);
        QLocale::setDefault(QLocale::c());
        QCOMPARE(text, QStringLiteral("1,5×"));
    }

    void libraryPreviewFollowsTheLibrarySliders_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("held");
        QTest::addColumn<double>("after");
        QTest::addColumn<bool>("shows");
        QTest::newRow("other slider") << "reflectAmount" << false << 0.1 << false;
        QTest::newRow("library slider just touched")
            << "reflectLibraryAmount" << false << 1.3 << true;
        QTest::newRow("library slider let go") << "reflectLibraryAmount" << false << 1.5 << false;
        QTest::newRow("library slider held") << "edgeLibraryDiffuse" << true << 29.0 << true;
        QTest::newRow("held too long") << "edgeLibraryDiffuse" << true << 30.5 << false;
    }
    void libraryPreviewFollowsTheLibrarySliders() {
        QFETCH(QString, key);
        QFETCH(bool, held);
        QFETCH(double, after);
        QFETCH(bool, shows);
        Preferences prefs(freshPath());
        ManualClock clock;
        VizConfig config(prefs, clock);
        QVERIFY(!config.showsLibraryPreview());
        config.beginEditing(held, key);
        clock.advance(after);
        QCOMPARE(config.showsLibraryPreview(), shows);
    }

    void movingALibrarySliderKeepsThePreviewOpen() {
        Preferences prefs(freshPath());
        ManualClock clock;
        VizConfig config(prefs, clock);
        config.beginEditing(true, "reflectLibraryAmount");
        clock.advance(20);
        config.set("reflectLibraryAmount", 1.0);
        config.touch(false);
        clock.advance(1.0);
        QVERIFY(config.showsLibraryPreview());
        clock.advance(0.5);
        QVERIFY(!config.showsLibraryPreview());
    }
};

QTEST_GUILESS_MAIN(tst_VizConfig)
#include "tst_VizConfig.moc"
