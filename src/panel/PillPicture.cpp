#include "panel/PillPicture.h"

#include "panel/SurfaceGeometry.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <cstring>

namespace MirlPlayer {

namespace {

QPainterPath rounded(QRectF rect, double radius) {
    QPainterPath path;
    radius = std::clamp(radius, 0.0, std::min(rect.width(), rect.height()) / 2);
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QColor withAlpha(const QColor& c, double alpha) {
    QColor out = c;
    out.setAlphaF(float(alpha));
    return out;
}

// A picture painted once: `paint` draws into a transparent image of `size`.
template <typename Paint> QImage painted(QSize size, Paint&& paint) {
    QImage image(size.expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    paint(p);
    return image;
}

// `src` (premultiplied RGBA bytes) stretched over `rect` of `dst` with bilinear filtering, as a
// scaled texture is drawn; every pixel of `dst` is written, those outside `rect` clear. The
// frames below are drawn without a painter: on a picture this small, setting one up costs more
// than all the pixels.
void stretchInto(QImage& dst, const QImage& src, QRectF rect) {
    const int sw = src.width(), sh = src.height();
    const double sx = sw / rect.width(), sy = sh / rect.height();
    // The source column and the weight of its right neighbour (of 256) for each column.
    thread_local std::vector<std::pair<int, int>> columns;
    columns.resize(size_t(dst.width()));
    for (int x = 0; x < dst.width(); ++x) {
        const double u = std::clamp((x + 0.5 - rect.left()) * sx - 0.5, 0.0, sw - 1.0);
        columns[size_t(x)] = {int(u), int((u - int(u)) * 256)};
    }
    const int left = std::max(0, int(std::floor(rect.left())));
    const int right = std::min(dst.width(), int(std::ceil(rect.right())));
    for (int y = 0; y < dst.height(); ++y) {
        auto* out = reinterpret_cast<quint32*>(dst.scanLine(y));
        std::memset(out, 0, size_t(dst.bytesPerLine()));
        if (y < std::floor(rect.top()) || y >= std::ceil(rect.bottom()))
            continue;
        const double v = std::clamp((y + 0.5 - rect.top()) * sy - 0.5, 0.0, sh - 1.0);
        const int fy = int((v - int(v)) * 256);
        const uchar* r0 = src.constScanLine(int(v));
        const uchar* r1 = src.constScanLine(std::min(int(v) + 1, sh - 1));
        for (int x = left; x < right; ++x) {
            const auto [i, fx] = columns[size_t(x)];
            const int j = std::min(i + 1, sw - 1);
            int c[4];
            for (int k = 0; k < 4; ++k) {
                const int top = r0[i * 4 + k] * (256 - fx) + r0[j * 4 + k] * fx;
                const int bottom = r1[i * 4 + k] * (256 - fx) + r1[j * 4 + k] * fx;
                c[k] = (top * (256 - fy) + bottom * fy) >> 16;
            }
            out[x] = quint32(c[3]) << 24 | quint32(c[0]) << 16 | quint32(c[1]) << 8 | quint32(c[2]);
        }
    }
}

// `src` laid over `dst` at `at`, premultiplied source-over.
void blendOver(QImage& dst, const QImage& src, QPoint at) {
    const QRect area = QRect(at, src.size()) & dst.rect();
    for (int y = area.top(); y <= area.bottom(); ++y) {
        auto* out = reinterpret_cast<quint32*>(dst.scanLine(y));
        const auto* in = reinterpret_cast<const quint32*>(src.constScanLine(y - at.y()));
        for (int x = area.left(); x <= area.right(); ++x) {
            const quint32 s = in[x - at.x()];
            const quint32 keep = 255 - (s >> 24);
            if (keep == 255)
                continue;
            const quint32 d = out[x];
            // Both halves of the pixel at once: red and blue, then alpha and green.
            quint32 rb = (d & 0xff00ff) * keep;
            rb = ((rb + ((rb >> 8) & 0xff00ff) + 0x800080) >> 8) & 0xff00ff;
            quint32 ag = ((d >> 8) & 0xff00ff) * keep;
            ag = (ag + ((ag >> 8) & 0xff00ff) + 0x800080) & 0xff00ff00;
            out[x] = s + rb + ag;
        }
    }
}

} // namespace

const QImage& PillPicture::rim(const PillLook& look, QSize pixels) {
    const RimKey key{look.accent, look.size, look.cornerRadius, look.offset, look.solid};
    if (m_rim.size() == pixels && key == m_rimKey)
        return m_rim;
    m_rimKey = key;
    const double w = look.size.width(), h = look.size.height(), r = look.cornerRadius;
    m_rim = painted(pixels, [&](QPainter& p) {
        p.translate(look.offset);
        p.scale(look.devicePixelRatio, look.devicePixelRatio);
        if (look.solid) {
            p.fillPath(rounded({0, 0, w, h}, r), Qt::black);
            return;
        }
        // A one-point line along the edge, lit from the top left; unsmoothed, as the scene's
        // shapes are, so that the two meet without a seam.
        p.setRenderHint(QPainter::Antialiasing, false);
        QPainterPath ring = rounded({0, 0, w, h}, r);
        ring.addPath(rounded({1, 1, w - 2, h - 2}, std::max(r - 1, 0.0)));
        ring.setFillRule(Qt::OddEvenFill);
        QLinearGradient light(0, 0, w, h);
        // Each channel on its own between the stops, as the scene's gradients blend.
        light.setInterpolationMode(QGradient::ComponentInterpolation);
        light.setColorAt(0, withAlpha(look.accent, 0.7));
        light.setColorAt(0.35, QColor::fromRgbF(1, 1, 1, 0.22f));
        light.setColorAt(0.7, withAlpha(look.accent, 0.32));
        light.setColorAt(1, QColor::fromRgbF(1, 1, 1, 0.07f));
        p.fillPath(ring, light);
    });
    return m_rim;
}

const QImage& PillPicture::mark(const QString& symbol, QSizeF pixels, QPointF fraction,
                                const PillLook& look) {
    if (look.ink != m_markInk || look.devicePixelRatio != m_markScale) {
        m_marks.clear();
        m_markInk = look.ink;
        m_markScale = look.devicePixelRatio;
    }
    // Heights come in whole device pixels and places in quarters of one: a handful of pictures.
    const auto quarter = [](double v) { return quint64(std::lround(v * 4)) & 0xffff; };
    const quint64 figure = symbol.isEmpty()     ? 0
                           : symbol == u"play"  ? 1
                           : symbol == u"pause" ? 2
                                                : 3;
    const quint64 key = figure << 62 | quarter(pixels.width()) << 42 |
                        quarter(pixels.height()) << 26 | quarter(fraction.x()) << 10 |
                        (quarter(fraction.y()) & 0x3ff);
    if (const auto found = m_marks.constFind(key); found != m_marks.cend() && figure != 3)
        return *found;
    const QSize size(int(std::ceil(fraction.x() + pixels.width())),
                     int(std::ceil(fraction.y() + pixels.height())));
    return *m_marks.insert(
        key, painted(size, [&](QPainter& p) {
            p.translate(fraction);
            if (symbol.isEmpty()) {
                // A capsule of the meter, at 90 %.
                p.setBrush(withAlpha(look.ink, look.ink.alphaF() * 0.9));
                const double radius = std::min(pixels.width(), pixels.height()) / 2;
                p.drawRoundedRect(QRectF(QPointF(), pixels), radius, radius);
            } else {
                p.scale(look.devicePixelRatio, look.devicePixelRatio);
                p.fillPath(SurfaceGeometry::symbolShape(symbol, symbolSize), look.ink);
            }
        }));
}

void PillPicture::place(const QString& symbol, QPointF at, QSizeF size, const PillLook& look) {
    const QPointF device = look.offset + at * look.devicePixelRatio;
    const QPoint whole(int(std::floor(device.x())), int(std::floor(device.y())));
    blendOver(m_image, mark(symbol, size * look.devicePixelRatio, device - QPointF(whole), look),
              whole);
}

const QImage& PillPicture::draw(const PillLook& look) {
    const double dpr = look.devicePixelRatio;
    const QSize pixels(int(std::ceil(look.offset.x() + look.size.width() * dpr)),
                       int(std::ceil(look.offset.y() + look.size.height() * dpr)));
    if (m_image.size() != pixels)
        m_image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    if (look.solid) {
        m_image.fill(Qt::transparent);
    } else {
        // The glass and its light at half the resolution, as the scene draws them: soft light
        // has no edge to lose.
        const QSize half = (look.size * dpr * 0.5).toSize().expandedTo(QSize(1, 1));
        stretchInto(m_image,
                    m_raster.draw(look.light, half, look.size, look.cornerRadius, look.glass),
                    QRectF(look.offset, look.size * dpr));
    }
    // Black, or the rim over the glass.
    blendOver(m_image, rim(look, pixels), QPoint());

    const QPointF box((look.size.width() - boxWidth) / 2, (look.size.height() - boxHeight) / 2);
    if (look.meter) {
        // Four capsules, vertically centred in the box.
        const double barWidth = (boxWidth - meterSpacing * 3) / 4;
        for (int i = 0; i < 4; ++i) {
            const double height = (*look.meter)[size_t(i)];
            place({}, box + QPointF(i * (barWidth + meterSpacing), (boxHeight - height) / 2),
                  {barWidth, height}, look);
        }
    } else {
        place(look.symbol, box + QPointF((boxWidth - symbolSize) / 2, (boxHeight - symbolSize) / 2),
              {symbolSize, symbolSize}, look);
    }
    return m_image;
}

} // namespace MirlPlayer
