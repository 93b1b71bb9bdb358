#include "core/Preferences.h"
#include "visualizers/VizConfig.h"

#include <QLocale>
#include <QSet>
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

    void everyDefaultLiesInItsRange() {
        QSet<QString> keys;
        for (const VizControl& c : VizConfig::allControls()) {
            keys.insert(c.key);
            const auto d = VizConfig::defaultValue(c.key);
            QVERIFY2(d && *d >= c.min && *d <= c.max && c.min < c.max, qPrintable(c.key));
        }
        QCOMPARE(keys.size(), VizConfig::allControls().size());
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

    // A slider's readout: a 0…1 range and the width/height sliders read as percent, the rest as
    // a factor, rounding in points.
    void aSlidersValueReadsInItsUnit_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("unit range") << "anaGrid" << 0.5 << "50%";
        QTest::newRow("percent slider beyond one") << "anaWidth" << 1.6 << "160%";
        QTest::newRow("factor") << "anaDepth" << 0.86 << QString::fromUtf8("0.9×");
        QTest::newRow("points") << "barsRound" << 1.5 << "1.5 pt";
    }
    void aSlidersValueReadsInItsUnit() {
        QFETCH(QString, key);
        QFETCH(double, value);
        QFETCH(QString, text);
        QCOMPARE(VizConfig::format(*VizConfig::control(key), value), text);
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
};

QTEST_GUILESS_MAIN(tst_VizConfig)
#include "tst_VizConfig.moc"
