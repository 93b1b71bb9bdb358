// How long the palette of a cover takes, against the time to decode the cover alone.
// A 640 x 640 JPEG cover is made once in memory; both steps are timed many times and the medians
// are compared, so the ratio says how much the palette adds to what a track change costs anyway.

#include "look/Palette.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImageWriter>
#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>
#include <QRandomGenerator>
#include <algorithm>
#include <cstdio>
#include <vector>

using namespace MirlPlayer;

namespace {

QByteArray makeCover() {
    QImage img(640, 640, QImage::Format_RGB32);
    QPainter p(&img);
    QLinearGradient sky(0, 0, 0, 640);
    sky.setColorAt(0, QColor(20, 24, 70));
    sky.setColorAt(0.6, QColor(180, 70, 90));
    sky.setColorAt(1, QColor(250, 170, 80));
    p.fillRect(img.rect(), sky);
    QRandomGenerator rng(7);
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 40; ++i) {
        const QPointF centre(rng.bounded(640), rng.bounded(640));
        const double radius = 10 + rng.bounded(90);
        QRadialGradient blob(centre, radius);
        blob.setColorAt(0, QColor::fromHsvF(rng.generateDouble(), 0.8, 0.9, 0.8));
        blob.setColorAt(1, Qt::transparent);
        p.setBrush(blob);
        p.drawEllipse(centre, radius, radius);
    }
    // Film grain, so the encoder has real detail to carry.
    for (int y = 0; y < 640; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < 640; ++x) {
            const int n = int(rng.bounded(17)) - 8;
            const QRgb c = row[x];
            row[x] = qRgb(std::clamp(qRed(c) + n, 0, 255), std::clamp(qGreen(c) + n, 0, 255),
                          std::clamp(qBlue(c) + n, 0, 255));
        }
    }
    p.end();
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(90);
    writer.write(img);
    return jpeg;
}

double median(std::vector<qint64> times) {
    std::sort(times.begin(), times.end());
    return double(times[times.size() / 2]);
}

} // namespace

int main() {
    const QByteArray jpeg = makeCover();
    const QImage decoded = QImage::fromData(jpeg, "JPEG");
    if (decoded.isNull()) {
        std::fprintf(stderr, "no JPEG decoder available\n");
        return 1;
    }
    constexpr int kRuns = 101;
    volatile qsizetype sink = 0;
    // Warm both paths once so that plugin loading and first-touch costs are not measured.
    sink = sink + QImage::fromData(jpeg, "JPEG").width() + extractPalette(decoded).size();

    // The two are timed in alternation, so that both see the same load on a shared machine.
    std::vector<qint64> decodeTimes;
    std::vector<qint64> paletteTimes;
    for (int i = 0; i < kRuns; ++i) {
        QElapsedTimer t;
        t.start();
        sink = sink + QImage::fromData(jpeg, "JPEG").width();
        decodeTimes.push_back(t.nsecsElapsed());
        t.restart();
        sink = sink + extractPalette(decoded).size();
        paletteTimes.push_back(t.nsecsElapsed());
    }
    const double decodeNs = median(decodeTimes);
    const double paletteNs = median(paletteTimes);
    const double ratio = paletteNs / decodeNs;

    std::printf("cover: 640 x 640 JPEG, %lld bytes, %d runs each\n", qlonglong(jpeg.size()), kRuns);
    std::printf("decode alone:   median %.3f ms\n", decodeNs / 1e6);
    std::printf("extractPalette: median %.3f ms\n", paletteNs / 1e6);
    std::printf("ratio palette / decode: %.3f\n", ratio);
    std::printf(
        "{\"bench\":\"palette\",\"palette_ns\":%.0f,\"decode_ns\":%.0f,\"ratio_to_decode\":%.3f}\n",
        paletteNs, decodeNs, ratio);
    return 0;
}
