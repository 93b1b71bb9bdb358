#include "look/PlayerBackdrop.h"
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

    // Without light the picture is the glass alone: what the frost, veil and sheen layers show
    // stacked, at the pixel's place along the sheen's diagonal (a 40 x 20 layer in 20 x 10).
    void withoutLightThePictureIsTheGlass() {
        const QColor body(30, 60, 90, 150);
        const double sheen = 0.8;
        const ReflectionRaster::Glass glass{float(body.redF() * body.alphaF()),
                                            float(body.greenF() * body.alphaF()),
                                            float(body.blueF() * body.alphaF()),
                                            float(body.alphaF()),
                                            1,
                                            float(sheen)};
        ReflectionRaster raster;
        const QImage& image = raster.draw({}, QSize(20, 10), QSizeF(40, 20), 0, glass);
        for (const QPoint pixel : {QPoint(0, 0), QPoint(10, 5), QPoint(19, 9)}) {
            const double x = (pixel.x() + 0.5) * 2, y = (pixel.y() + 0.5) * 2;
            const double t = (x * 40 + y * 20) / (40.0 * 40 + 20 * 20);
            const QColor want = PlayerBackdrop::stacked(
                body, 1, QColor::fromRgbF(1, 1, 1, float(PlayerBackdrop::sheenAlpha(t))), sheen);
            const QColor got = QColor::fromRgba(qUnpremultiply(image.pixel(pixel)));
            QVERIFY2(std::abs(got.red() - want.red()) <= 2 &&
                         std::abs(got.blue() - want.blue()) <= 2 &&
                         std::abs(got.alpha() - want.alpha()) <= 2,
                     qPrintable(QStringLiteral("%1: %2 %3")
                                    .arg(pixel.x())
                                    .arg(got.name(QColor::HexArgb), want.name(QColor::HexArgb))));
        }
    }
};

QTEST_GUILESS_MAIN(tst_ReflectionRaster)
#include "tst_ReflectionRaster.moc"
