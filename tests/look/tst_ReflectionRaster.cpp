#include "look/ReflectionRaster.h"

#include <QTest>

using namespace MirlPlayer;

class tst_ReflectionRaster : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // A 40-point layer drawn into 20 pixels with corners of 6 points: a white blob of alpha 0.5
    // at (10, 10), radius 8; two of alpha 0.8 at (34, 34), radius 12, that together overflow.
    void lightLandsWhereTheLayerPutsIt_data() {
        QTest::addColumn<QPoint>("pixel");
        QTest::addColumn<int>("alpha");
        QTest::newRow("near a blob's centre, nearly its alpha") << QPoint(5, 5) << 120;
        QTest::newRow("past its radius nothing") << QPoint(10, 5) << 0;
        QTest::newRow("added light clips at full") << QPoint(17, 17) << 255;
        QTest::newRow("the rounded corner stays empty") << QPoint(19, 19) << 0;
    }
    void lightLandsWhereTheLayerPutsIt() {
        QFETCH(QPoint, pixel);
        QFETCH(int, alpha);
        ReflectionFrame frame;
        const HSB white{0, 0, 1};
        frame.blobs = {
            {{10, 10}, 8, 0.5, white}, {{34, 34}, 12, 0.8, white}, {{34, 34}, 12, 0.8, white}};
        ReflectionRaster raster;
        const QImage& image = raster.draw(frame, QSize(20, 20), QSizeF(40, 40), 6);
        const QRgb p = image.pixel(pixel);
        QVERIFY2(std::abs(qAlpha(p) - alpha) <= 3, qPrintable(QString::number(qAlpha(p))));
        QCOMPARE(qRed(p), qAlpha(p)); // white light: premultiplied channels equal the alpha
    }
};

QTEST_GUILESS_MAIN(tst_ReflectionRaster)
#include "tst_ReflectionRaster.moc"
