#include "audio/EQTuning.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_EQTuning : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void eachKeyFallsBackOnItsOwn_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<double>("contrast");
        QTest::addColumn<double>("tilt");
        QTest::addColumn<double>("punch");
        QTest::newRow("not json") << QByteArray("contrast: 3") << 2.0 << 2.0 << 0.0;
        QTest::newRow("an array") << QByteArray("[1, 2]") << 2.0 << 2.0 << 0.0;
        QTest::newRow("empty object") << QByteArray("{}") << 2.0 << 2.0 << 0.0;
        QTest::newRow("some keys")
            << QByteArray(R"({"contrast": 3, "punch": 0.5})") << 3.0 << 2.0 << 0.5;
        QTest::newRow("a string keeps its default")
            << QByteArray(R"({"contrast": "3", "tilt": 1.5})") << 2.0 << 1.5 << 0.0;
    }
    void eachKeyFallsBackOnItsOwn() {
        QFETCH(QByteArray, json);
        QFETCH(double, contrast);
        QFETCH(double, tilt);
        QFETCH(double, punch);
        const EQTuning t = EQTuning::fromJson(json);
        QCOMPARE(t.contrast, contrast);
        QCOMPARE(t.tilt, tilt);
        QCOMPARE(t.punch, punch);
        QCOMPARE(t.release, 0.08);
    }

    void theFileLivesUnderTheHomeFolderAndIsReadOnce() {
        QCOMPARE(EQTuning::defaultPath(), QDir::homePath() + "/Vantrel/eq.json");
        QVERIFY(QDir().mkpath(QDir::homePath() + "/Vantrel"));
        QFile f(EQTuning::defaultPath());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(R"({"gain": 1.5})");
        f.close();
        QCOMPARE(EQTuning::shared().gain, 1.5);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(R"({"gain": 0.5})");
        f.close();
        QCOMPARE(EQTuning::shared().gain, 1.5);
        QVERIFY(f.remove());
    }

    void aMissingFileLeavesTheDefaults() {
        QTemporaryDir dir;
        QCOMPARE(EQTuning::load(dir.filePath("nothing.json")), EQTuning{});
    }
};

QTEST_APPLESS_MAIN(tst_EQTuning)
#include "tst_EQTuning.moc"
