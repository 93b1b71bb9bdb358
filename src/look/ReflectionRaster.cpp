#include "look/ReflectionRaster.h"

#include "audio/WideLoop.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

namespace {

struct Light {
    float r, g, b, a;
};

Light lightOf(const LightBlob& blob) {
    const RGB c = hsbToRgb(
        {blob.colour.h, std::clamp(blob.colour.s, 0.0, 1.0), std::clamp(blob.colour.b, 0.0, 1.0)});
    const auto unit = [](double v) { return float(std::clamp(v, 0.0, 1.0)); };
    const float a = unit(blob.alpha);
    return {unit(c.r) * a, unit(c.g) * a, unit(c.b) * a, a};
}

// One row of a blob into the four planes: vectorised across the row, since every pixel does the
// same few operations.
MIRL_WIDE_LOOP void addRow(float* r, float* g, float* b, float* a, int x0, int x1, float cx,
                           float toX, float rest, Light light) {
    for (int x = x0; x < x1; ++x) {
        const float dx = (float(x) + 0.5f - cx) * toX;
        const float t = std::max(rest - dx * dx, 0.0f);
        const float f = t * t;
        r[x] += light.r * f;
        g[x] += light.g * f;
        b[x] += light.b * f;
        a[x] += light.a * f;
    }
}

} // namespace

float* ReflectionRaster::plane(int channel, int y) {
    return m_sum.data() + (std::size_t(channel) * std::size_t(m_h) + std::size_t(y)) * m_w;
}

const QImage& ReflectionRaster::draw(const ReflectionFrame& frame, QSize pixels, QSizeF layer,
                                     double cornerRadius) {
    m_w = std::max(pixels.width(), 0);
    m_h = std::max(pixels.height(), 0);
    if (m_image.size() != QSize(m_w, m_h))
        m_image = QImage(m_w, m_h, QImage::Format_ARGB32_Premultiplied);
    if (m_w == 0 || m_h == 0 || layer.isEmpty())
        return m_image;
    m_sum.assign(std::size_t(m_w) * std::size_t(m_h) * 4, 0.0f);
    const float sx = float(m_w / layer.width());
    const float sy = float(m_h / layer.height());
    for (const LightBlob& blob : frame.blobs)
        addBlob(blob, sx, sy);
    if (frame.wash)
        addWash(*frame.wash, sy);
    finish(float(cornerRadius) * std::min(sx, sy));
    return m_image;
}

void ReflectionRaster::addBlob(const LightBlob& blob, float sx, float sy) {
    const float rx = float(blob.radius) * sx;
    const float ry = float(blob.radius) * sy;
    if (!(rx > 0) || !(ry > 0) || !(blob.alpha > 0))
        return;
    const Light light = lightOf(blob);
    const float cx = float(blob.centre.x()) * sx;
    const float cy = float(blob.centre.y()) * sy;
    const int x0 = std::max(0, int(std::floor(cx - rx)));
    const int x1 = std::min(m_w, int(std::ceil(cx + rx)) + 1);
    const int y0 = std::max(0, int(std::floor(cy - ry)));
    const int y1 = std::min(m_h, int(std::ceil(cy + ry)) + 1);
    const float toX = 1.0f / rx;
    const float toY = 1.0f / ry;
    for (int y = y0; y < y1; ++y) {
        const float dy = (float(y) + 0.5f - cy) * toY;
        const float rest = 1.0f - dy * dy;
        if (rest <= 0)
            continue;
        addRow(plane(0, y), plane(1, y), plane(2, y), plane(3, y), x0, x1, cx, toX, rest, light);
    }
}

void ReflectionRaster::addWash(const LightBlob& wash, float sy) {
    const float depth = float(wash.radius) * sy;
    if (!(depth > 0) || !(wash.alpha > 0))
        return;
    const Light light = lightOf(wash);
    const int rows = std::min(m_h, int(std::ceil(depth)));
    for (int y = 0; y < rows; ++y) {
        const float x = (float(y) + 0.5f) / depth;
        const float t = std::max(1.0f - x * x, 0.0f);
        const float f = t * t;
        const float add[4] = {light.r * f, light.g * f, light.b * f, light.a * f};
        for (int c = 0; c < 4; ++c) {
            float* p = plane(c, y);
            for (int i = 0; i < m_w; ++i)
                p[i] += add[c];
        }
    }
}

void ReflectionRaster::finish(float corner) {
    corner = std::clamp(corner, 0.0f, float(std::min(m_w, m_h)) / 2);
    const auto byte = [](float v) { return int(std::clamp(v, 0.0f, 1.0f) * 255.0f + 0.5f); };
    for (int y = 0; y < m_h; ++y) {
        auto* out = reinterpret_cast<QRgb*>(m_image.scanLine(y));
        const float* r = plane(0, y);
        const float* g = plane(1, y);
        const float* b = plane(2, y);
        const float* alpha = plane(3, y);
        const float py = float(y) + 0.5f;
        const float dy = std::max({corner - py, py - (float(m_h) - corner), 0.0f});
        for (int x = 0; x < m_w; ++x) {
            // Coverage of the rounded shape: whole away from the corners, the distance to the
            // corner's arc within them.
            float cover = 1;
            if (dy > 0) {
                const float px = float(x) + 0.5f;
                const float dx = std::max({corner - px, px - (float(m_w) - corner), 0.0f});
                if (dx > 0)
                    cover = std::clamp(corner - std::sqrt(dx * dx + dy * dy) + 0.5f, 0.0f, 1.0f);
            }
            out[x] =
                qRgba(byte(std::min(r[x], 1.0f) * cover), byte(std::min(g[x], 1.0f) * cover),
                      byte(std::min(b[x], 1.0f) * cover), byte(std::min(alpha[x], 1.0f) * cover));
        }
    }
}

} // namespace MirlPlayer
