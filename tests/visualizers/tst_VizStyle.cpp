#include "visualizers/VizStyle.h"

#include <QSet>
#include <QTest>

using namespace MirlPlayer;

class tst_VizStyle : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyStyleRoundTripsThroughItsStoredID() {
        QSet<QString> ids;
        for (const VizStyle style : VizStyles::all()) {
            const QString id = VizStyles::id(style);
            ids.insert(id);
            QCOMPARE(VizStyles::fromID(id), std::optional<VizStyle>(style));
            QVERIFY(!VizStyles::controlKeys(style).isEmpty());
        }
        QCOMPARE(ids.size(), VizStyles::all().size());
        QCOMPARE(VizStyles::fromID("Waterfall"), std::nullopt); // ids are case-sensitive
        QCOMPARE(VizStyles::fromID(""), std::nullopt);
    }
};

QTEST_APPLESS_MAIN(tst_VizStyle)
#include "tst_VizStyle.moc"
