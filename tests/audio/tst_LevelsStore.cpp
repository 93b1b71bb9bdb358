#include "audio/LevelsStore.h"

#include <QSignalSpy>
#include <QTest>

using namespace MirlPlayer;

class tst_LevelsStore : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startsWithAFaintShapeBeforeAnyAudio() {
        LevelsStore store;
        QCOMPARE(store.levels(), QList<double>(128, 0.05));
    }

    void anEqualArrayIsNotPublished() {
        LevelsStore store;
        QSignalSpy changed(&store, &LevelsStore::levelsChanged);
        store.setLevels(QList<double>(128, 0.05));
        QCOMPARE(changed.count(), 0);
        store.setLevels(QList<double>(128, 0.5));
        QCOMPARE(changed.count(), 1);
    }

    void fadeWaitsForItsThreeConditions_data() {
        QTest::addColumn<bool>("needsAudio");
        QTest::addColumn<double>("sinceAudio");
        QTest::addColumn<double>("level");
        QTest::addColumn<bool>("fades");
        QTest::newRow("nobody shows levels") << false << 5.0 << 0.8 << false;
        QTest::newRow("live audio arriving") << true << 0.39 << 0.8 << false;
        QTest::newRow("audio stopped") << true << 0.4 << 0.8 << true;
        QTest::newRow("settled") << true << 5.0 << 0.061 << false;
        QTest::newRow("just above settled") << true << 5.0 << 0.0611 << true;
    }
    void fadeWaitsForItsThreeConditions() {
        QFETCH(bool, needsAudio);
        QFETCH(double, sinceAudio);
        QFETCH(double, level);
        QFETCH(bool, fades);
        LevelsStore store;
        store.setLevels(QList<double>(128, level));
        QSignalSpy changed(&store, &LevelsStore::levelsChanged);
        QCOMPARE(store.fadeTick(needsAudio, sinceAudio), fades);
        QCOMPARE(changed.count(), fades ? 1 : 0);
        if (fades)
            QCOMPARE(store.levels().first(), level + (0.06 - level) * 0.2);
        else
            QCOMPARE(store.levels().first(), level);
    }

    void fadeSettlesOnTheRestingShapeAndStops() {
        LevelsStore store;
        QList<double> levels(128, 0.0);
        levels[10] = 1.0; // one loud band keeps the quiet ones rising towards rest
        store.setLevels(levels);
        int ticks = 0;
        while (store.fadeTick(true, 1.0))
            QVERIFY(++ticks < 100);
        QVERIFY(ticks > 5);
        QVERIFY(store.levels()[10] <= 0.061 && store.levels()[10] > 0.06);
        QVERIFY(store.levels()[0] > 0.05 && store.levels()[0] < 0.06);
        QSignalSpy changed(&store, &LevelsStore::levelsChanged);
        QVERIFY(!store.fadeTick(true, 10.0));
        QCOMPARE(changed.count(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_LevelsStore)
#include "tst_LevelsStore.moc"
