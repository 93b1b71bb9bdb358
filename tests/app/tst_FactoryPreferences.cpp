#include "app/FactoryPreferences.h"
#include "app/PropertyList.h"
#include "core/Preferences.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_FactoryPreferences : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString write(const QString& name, const QByteArray& content) {
        QFile f(m_dir.filePath(name));
        f.open(QIODevice::WriteOnly);
        f.write(content);
        return f.fileName();
    }

private Q_SLOTS:
    void shippedDefaultsSeedAnEmptyStoreOnce() {
        Preferences prefs(m_dir.filePath("fresh.conf"));
        QVERIFY(seedFactoryPreferences(prefs, SHIPPED_DEFAULTS));
        const QVariantMap domain = prefs.persistentDomain();
        QCOMPARE(domain.size(), 20); // the 19 keys and the marker
        for (const QString& key : factoryPreferenceKeys())
            QVERIFY2(domain.contains(key), qPrintable(key));
        QVERIFY(prefs.boolValue("factoryPreferencesSeeded", false));
        QCOMPARE(prefs.stringValue("skinID"), QStringLiteral("custom"));
        QCOMPARE(prefs.doubleValue("glow", 0), 0.6);
        QCOMPARE(prefs.object("customHSB").toList().size(), 3);

        // A second start changes nothing, even after the user changed a value.
        prefs.setValue("glow", 0.9);
        QVERIFY(!seedFactoryPreferences(prefs, SHIPPED_DEFAULTS));
        QCOMPARE(prefs.doubleValue("glow", 0), 0.9);
    }

    void anyHistorySkipsSeedingForGood_data() {
        QTest::addColumn<QString>("key");
        QTest::newRow("a look key") << "matchLoudness";
        QTest::newRow("setup completed") << "setupCompleted";
        QTest::newRow("assistant finished") << "setupAssistantFinished";
    }
    void anyHistorySkipsSeedingForGood() {
        QFETCH(QString, key);
        Preferences prefs(m_dir.filePath(key + ".conf"));
        prefs.setValue(key, false);
        QVERIFY(!seedFactoryPreferences(prefs, SHIPPED_DEFAULTS));
        QCOMPARE(prefs.persistentDomain().size(), 1);
    }

    void badResourceLeavesTheMarkerUnset_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not xml") << QByteArray("\x89PNG garbage");
        QTest::newRow("truncated") << QByteArray("<plist><dict><key>glow</key><real>0.6");
        QTest::newRow("not a dictionary")
            << QByteArray("<plist><array><string>x</string></array></plist>");
        QTest::newRow("bad number")
            << QByteArray("<plist><dict><key>glow</key><real>lots</real></dict></plist>");
    }
    void badResourceLeavesTheMarkerUnset() {
        QFETCH(QByteArray, content);
        Preferences prefs(m_dir.filePath(QString(QTest::currentDataTag()) + ".conf"));
        QVERIFY(!seedFactoryPreferences(prefs, write("bad.plist", content)));
        QVERIFY(!seedFactoryPreferences(prefs, m_dir.filePath("missing.plist")));
        QVERIFY(!seedFactoryPreferences(prefs, QString()));
        QVERIFY(prefs.persistentDomain().isEmpty());
    }

    void keysOutsideTheFactorySetAreIgnored() {
        Preferences prefs(m_dir.filePath("filter.conf"));
        const QString path =
            write("extra.plist", "<plist><dict><key>glow</key><real>0.3</real>"
                                 "<key>setupCompleted</key><true/></dict></plist>");
        QVERIFY(seedFactoryPreferences(prefs, path));
        QCOMPARE(prefs.doubleValue("glow", 0), 0.3);
        QVERIFY(!prefs.contains("setupCompleted"));
    }

    void propertyListValues() {
        const auto v = parsePropertyList(
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
            "<key>i</key><integer>-7</integer><key>b</key><false/>"
            "<key>d</key><data>aGk=</data><key>a</key><array><dict/><string>s</string></array>"
            "</dict></plist>");
        QVERIFY(v.has_value());
        const QVariantMap map = v->toMap();
        QCOMPARE(map.value("i").toLongLong(), -7);
        QCOMPARE(map.value("b").toBool(), false);
        QCOMPARE(map.value("d").toByteArray(), QByteArray("hi"));
        QCOMPARE(map.value("a").toList().size(), 2);
        // Nesting without end cannot exhaust the stack.
        QByteArray deep = "<plist>";
        for (int i = 0; i < 10000; ++i)
            deep += "<array>";
        QVERIFY(!parsePropertyList(deep).has_value());
    }
};

QTEST_GUILESS_MAIN(tst_FactoryPreferences)
#include "tst_FactoryPreferences.moc"
