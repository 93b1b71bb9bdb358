#include "core/Preferences.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_Preferences : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void absentAndStoredKeysAreTold() {
        QTemporaryDir dir;
        Preferences prefs(dir.filePath("p.conf"));
        QVERIFY(!prefs.contains("showVisualizer"));
        QCOMPARE(prefs.boolValue("showVisualizer", true), true);
        prefs.setValue("showVisualizer", false);
        QVERIFY(prefs.contains("showVisualizer"));
        QCOMPARE(prefs.boolValue("showVisualizer", true), false);
        QVERIFY(prefs.persistentDomain().contains("showVisualizer"));
    }

    void valuesSurviveAReopen() {
        QTemporaryDir dir;
        {
            Preferences prefs(dir.filePath("p.conf"));
            prefs.setValue("motionSpeed", 1.25);
            prefs.setValue("skinID", "album");
            prefs.setValue("vizConfig2", QVariantMap{{"gain", 0.5}});
        }
        Preferences prefs(dir.filePath("p.conf"));
        QCOMPARE(prefs.doubleValue("motionSpeed", 1), 1.25);
        QCOMPARE(prefs.stringValue("skinID"), QStringLiteral("album"));
        QCOMPARE(prefs.mapValue("vizConfig2").value("gain").toDouble(), 0.5);
    }

    void handWrittenFileIsRead_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("flag");
        QTest::addColumn<double>("number");
        QTest::newRow("true") << QByteArray("k=true") << true << 7.0;
        QTest::newRow("false") << QByteArray("k=false") << false << 7.0;
        QTest::newRow("number") << QByteArray("k=2.5") << true << 2.5;
        QTest::newRow("garbage falls back") << QByteArray("k=banana") << true << 7.0;
        QTest::newRow("nan falls back") << QByteArray("k=nan") << true << 7.0;
    }
    void handWrittenFileIsRead() {
        QFETCH(QByteArray, line);
        QFETCH(bool, flag);
        QFETCH(double, number);
        QTemporaryDir dir;
        QFile f(dir.filePath("p.conf"));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("[General]\n" + line + "\n");
        f.close();
        Preferences prefs(f.fileName());
        QVERIFY(prefs.contains("k"));
        QCOMPARE(prefs.boolValue("k", true), flag);
        QCOMPARE(prefs.doubleValue("k", 7.0), number);
    }

    void changesAreAnnounced() {
        QTemporaryDir dir;
        Preferences prefs(dir.filePath("p.conf"));
        QSignalSpy spy(&prefs, &Preferences::changed);
        prefs.setValue("glow", true);
        prefs.remove("glow");
        prefs.remove("glow"); // nothing stored: nothing to announce
        QCOMPARE(spy.count(), 2);
    }
};

QTEST_GUILESS_MAIN(tst_Preferences)
#include "tst_Preferences.moc"
