#include "audio/StereoStore.h"

#include <QTest>

using namespace MirlPlayer;

class tst_StereoStore : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyUpdateCountsEvenAnEqualOne() {
        StereoStore store;
        QCOMPARE(store.generation(), 0u);
        QCOMPARE(store.curve(), StereoStore::Curve{});
        StereoStore::Curve curve{};
        curve[48] = 0.7f;
        store.update(curve);
        QCOMPARE(store.generation(), 1u);
        QCOMPARE(store.curve()[48], 0.7f);
        // A teardown's flat curve after a flat curve is still news to a renderer.
        store.update(StereoStore::Curve{});
        store.update(StereoStore::Curve{});
        QCOMPARE(store.generation(), 3u);
    }
};

QTEST_APPLESS_MAIN(tst_StereoStore)
#include "tst_StereoStore.moc"
