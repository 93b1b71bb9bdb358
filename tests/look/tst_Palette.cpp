#include "look/Palette.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QPainter>
#include <QTest>
#include <cmath>
#include <future>

using namespace MirlPlayer;

namespace {

QImage filled(const QColor& colour, int w = 64, int h = 64,
              QImage::Format format = QImage::Format_RGB32) {
    QImage img(w, h, format);
    img.fill(colour);
    return img;
}

QImage twoColours(const QColor& left, const QColor& right) {
    QImage img(64, 64, QImage::Format_RGB32);
    QPainter p(&img);
    p.fillRect(0, 0, 32, 64, left);
    p.fillRect(32, 0, 32, 64, right);
    return img;
}

double hueDegrees(const HSB& c) {
    return toOklch(hsbToOklab(c)).h;
}

double hueDegrees(const QColor& c) {
    return toOklch(srgbToOklab({c.redF(), c.greenF(), c.blueF()})).h;
}

double angleGap(double a, double b) {
    return std::abs(std::remainder(a - b, 360.0));
}

double pathLength(const Palette& p) {
    double length = 0;
    for (qsizetype i = 1; i < p.size(); ++i)
        length += distance(hsbToOklab(p[i - 1]), hsbToOklab(p[i]));
    return length;
}

OKLCH grey(double L) {
    return {L, 0.0, 0.0};
}

} // namespace

class tst_Palette : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void twoColourCoverGivesBothHues_data() {
        QTest::addColumn<QColor>("left");
        QTest::addColumn<QColor>("right");
        QTest::newRow("red and blue") << QColor(220, 30, 40) << QColor(30, 60, 200);
        QTest::newRow("teal and orange") << QColor(0, 128, 128) << QColor(255, 140, 0);
        QTest::newRow("dark green and pink") << QColor(10, 60, 20) << QColor(250, 150, 200);
    }
    void twoColourCoverGivesBothHues() {
        QFETCH(QColor, left);
        QFETCH(QColor, right);
        const Palette palette = extractPalette(twoColours(left, right));
        QCOMPARE(palette.size(), 4);
        for (const QColor& source : {left, right}) {
            const double want = hueDegrees(source);
            const bool found = std::any_of(palette.begin(), palette.end(), [&](const HSB& c) {
                return angleGap(hueDegrees(c), want) < 12.0;
            });
            QVERIFY2(found, qPrintable(source.name()));
        }
        // Path-ordered: no reordering that keeps the dominant colour first is shorter.
        Palette order = palette;
        std::sort(order.begin() + 1, order.end(),
                  [](const HSB& a, const HSB& b) { return a.h < b.h; });
        do {
            QVERIFY(pathLength(palette) <= pathLength(order) + 1e-9);
        } while (std::next_permutation(order.begin() + 1, order.end(),
                                       [](const HSB& a, const HSB& b) { return a.h < b.h; }));
    }

    void neutralCoversFallBackAndFillUp_data() {
        QTest::addColumn<QColor>("colour");
        QTest::addColumn<double>("firstLightness");
        // Mid grey is neither colourful nor pale: the first cluster, lifted, to L 0.66.
        QTest::newRow("mid grey") << QColor(128, 128, 128) << 0.66;
        // Black also falls through to the first cluster; the lift makes it a faint light grey.
        QTest::newRow("black") << QColor(0, 0, 0) << 0.66;
        // A light grey passes as a pale neutral and keeps its lightness.
        QTest::newRow("light grey") << QColor(215, 215, 215) << 0.8792;
    }
    void neutralCoversFallBackAndFillUp() {
        QFETCH(QColor, colour);
        QFETCH(double, firstLightness);
        const Palette palette = extractPalette(filled(colour));
        QCOMPARE(palette.size(), 4);
        double brightest = 0;
        for (const HSB& c : palette) {
            QVERIFY2(c.s < 0.01, qPrintable(QString::number(c.s)));
            brightest = std::max(brightest, toOklch(hsbToOklab(c)).L);
        }
        QVERIFY(brightest > firstLightness);
        // The fill-up colours are lighter and darker neighbours of the first: not all the same.
        QVERIFY(palette[0] != palette[1] || palette[1] != palette[2] || palette[2] != palette[3]);
        const bool hasFirst = std::any_of(palette.begin(), palette.end(), [&](const HSB& c) {
            return std::abs(toOklch(hsbToOklab(c)).L - firstLightness) < 2e-3;
        });
        QVERIFY(hasFirst);
    }

    void coversInAnotherColourSpaceAreReadAsSrgb() {
        QImage wide = filled(QColor(200, 120, 90));
        wide.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
        const Palette tagged = extractPalette(wide);
        const Palette converted = extractPalette(wide.convertedToColorSpace(QColorSpace::SRgb));
        const Palette untagged = extractPalette(filled(QColor(200, 120, 90)));
        QCOMPARE(tagged.size(), 4);
        // Same colours as converting first, up to 8-bit rounding; not the untagged reading.
        QVERIFY(distance(hsbToOklab(tagged[0]), hsbToOklab(converted[0])) < 0.01);
        QVERIFY(distance(hsbToOklab(tagged[0]), hsbToOklab(untagged[0])) > 0.02);
    }

    void undrawableImagesGiveNone_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("not an image") << QByteArray("this is not a picture at all");
        QByteArray truncatedPng("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
        QTest::newRow("truncated png") << truncatedPng;
    }
    void undrawableImagesGiveNone() {
        QFETCH(QByteArray, bytes);
        QVERIFY(extractPalette(QImage::fromData(bytes)).isEmpty());
        QVERIFY(extractPalette(QImage()).isEmpty());
    }

    void kMeansSeparatesGroupsAndSortsByWeight() {
        // Three heavy points at one place, two at another: two clusters, heavier first.
        const QList<OKLab> points{
            {0.2, 0, 0}, {0.8, 0.1, 0}, {0.2, 0, 0}, {0.8, 0.1, 0}, {0.2, 0, 0}};
        const QList<double> weights{1, 2, 1, 2, 1};
        const QList<Cluster> clusters = weightedKMeans(points, weights, 8);
        QCOMPARE(clusters.size(), 2);
        QCOMPARE(clusters[0].weight, 4.0);
        QCOMPARE(clusters[0].centre.L, 0.8);
        QCOMPARE(clusters[1].weight, 3.0);
        QCOMPARE(clusters[1].centre.L, 0.2);
    }

    void pathOrderIsShortestWithStartPenalty_data() {
        QTest::addColumn<QList<double>>("lightness");
        QTest::addColumn<QList<double>>("expected");
        QTest::newRow("already in order")
            << QList<double>{0.5, 0.6, 0.7, 0.8} << QList<double>{0.5, 0.6, 0.7, 0.8};
        QTest::newRow("shuffled, first at an end")
            << QList<double>{0.5, 0.8, 0.6, 0.7} << QList<double>{0.5, 0.6, 0.7, 0.8};
        // Starting elsewhere would save 0.02, less than the penalty: the first stays first.
        QTest::newRow("small saving keeps the first")
            << QList<double>{0.51, 0.50, 0.52, 0.53} << QList<double>{0.51, 0.50, 0.52, 0.53};
        // Starting elsewhere saves 0.2, more than the penalty.
        QTest::newRow("large saving moves the first")
            << QList<double>{0.6, 0.5, 0.7, 0.8} << QList<double>{0.5, 0.6, 0.7, 0.8};
    }
    void pathOrderIsShortestWithStartPenalty() {
        QFETCH(QList<double>, lightness);
        QFETCH(QList<double>, expected);
        QList<OKLCH> four;
        for (double L : lightness)
            four.append(grey(L));
        const QList<OKLCH> ordered = shortestPathOrder(four);
        QList<double> got;
        for (const OKLCH& c : ordered)
            got.append(c.L);
        QCOMPARE(got, expected);
    }
};

QTEST_APPLESS_MAIN(tst_Palette)
#include "tst_Palette.moc"
