#include "visualizers/VizStyle.h"

#include <QTest>

using namespace MirlPlayer;

class tst_VizStyle : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void stylesRoundTripThroughTheirStoredIds_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("controlCount");
        QTest::newRow("waterfall") << 0 << "waterfall"
                                   << "3D Waterfall" << 3;
        QTest::newRow("bars") << 1 << "bars"
                              << "Bars" << 2;
        QTest::newRow("mirror") << 2 << "mirror"
                                << "Mirror" << 2;
        QTest::newRow("stereo") << 3 << "stereo"
                                << "Stereo 3D" << 2;
        QTest::newRow("stereoAnalyzer") << 4 << "stereoAnalyzer"
                                        << "Stereo 3D Analyzer" << 6;
        QTest::newRow("skyline") << 5 << "skyline"
                                 << "Neon Skyline" << 1;
        QTest::newRow("circuitry") << 6 << "circuitry"
                                   << "Cyber Grid" << 1;
        QTest::newRow("silk") << 7 << "silk"
                              << "Silk" << 1;
        QTest::newRow("phosphor") << 8 << "phosphor"
                                  << "Phosphor" << 1;
    }
    void stylesRoundTripThroughTheirStoredIds() {
        QFETCH(int, index);
        QFETCH(QString, id);
        QFETCH(QString, title);
        QFETCH(int, controlCount);
        QCOMPARE(VizStyles::all().size(), 9);
        const VizStyle style = VizStyles::all().at(index);
        QCOMPARE(VizStyles::id(style), id);
        QCOMPARE(VizStyles::title(style), title);
        QCOMPARE(VizStyles::fromID(id), std::optional<VizStyle>(style));
        QCOMPARE(VizStyles::controlKeys(style).size(), controlCount);
        QCOMPARE(VizStyles::accessibilityLabel(style), title + " audio spectrum");
    }

    void unknownIdsNameNoStyle() {
        QCOMPARE(VizStyles::fromID("Waterfall"), std::nullopt);
        QCOMPARE(VizStyles::fromID(""), std::nullopt);
    }
};

QTEST_APPLESS_MAIN(tst_VizStyle)
#include "tst_VizStyle.moc"
