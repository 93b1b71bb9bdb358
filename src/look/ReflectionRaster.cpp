#include "look/ReflectionRaster.h"

#include "audio/WideLoop.h"
#include "look/PlayerBackdrop.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

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

// A row of the four planes, and of the glass under them when there is one.
struct Row {
    const float *r, *g, *b, *a;
    const float* sheen; // the sheen's opacity at each pixel; null without the glass
    ReflectionRaster::Glass glass;
};

std::uint32_t byte(float v, float cover) {
    return std::uint32_t(std::min(std::max(v, 0.0f), 1.0f) * cover * 255.0f + 0.5f);
}

// Pixels x0 to x1 of a row, the light clipped at full, over the glass and under its sheen when
// given, scaled by the shape's coverage, as premultiplied RGBA bytes (the texture's own order,
// so the picture is copied as it is).
MIRL_WIDE_LOOP void packRow(std::uint32_t* out, const Row& row, int x0, int x1, float cover) {
    if (!row.sheen) {
        for (int x = x0; x < x1; ++x)
            out[x] = byte(row.r[x], cover) | byte(row.g[x], cover) << 8 |
                     byte(row.b[x], cover) << 16 | byte(row.a[x], cover) << 24;
        return;
    }
    const ReflectionRaster::Glass g = row.glass;
    for (int x = x0; x < x1; ++x) {
        const float s = row.sheen[x], keep = 1 - s;
        const float under = (1 - std::min(row.a[x], 1.0f) * g.light) * keep;
        const float light = g.light * keep;
        out[x] = byte(s + std::min(row.r[x], 1.0f) * light + g.r * under, cover) |
                 byte(s + std::min(row.g[x], 1.0f) * light + g.g * under, cover) << 8 |
                 byte(s + std::min(row.b[x], 1.0f) * light + g.b * under, cover) << 16 |
                 byte(s + std::min(row.a[x], 1.0f) * light + g.a * under, cover) << 24;
    }
}

} // namespace

float* ReflectionRaster::plane(int channel, int y) {
    return m_sum.data() + (std::size_t(channel) * std::size_t(m_h) + std::size_t(y)) * m_w;
}

const QImage& ReflectionRaster::draw(const ReflectionFrame& frame, QSize pixels, QSizeF layer,
                                     double cornerRadius, const std::optional<Glass>& glass) {
    m_w = std::max(pixels.width(), 0);
    m_h = std::max(pixels.height(), 0);
    if (m_image.size() != QSize(m_w, m_h))
        m_image = QImage(m_w, m_h, QImage::Format_RGBA8888_Premultiplied);
    if (m_w == 0 || m_h == 0 || layer.isEmpty())
        return m_image;
    m_sum.assign(std::size_t(m_w) * std::size_t(m_h) * 4, 0.0f);
    const float sx = float(m_w / layer.width());
    const float sy = float(m_h / layer.height());
    for (const LightBlob& blob : frame.blobs)
        addBlob(blob, sx, sy);
    if (frame.wash)
        addWash(*frame.wash, sy);
    finish(float(cornerRadius) * std::min(sx, sy), glass, layer);
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

void ReflectionRaster::sheenFor(QSizeF layer, float opacity) {
    const std::size_t count = std::size_t(m_w) * std::size_t(m_h);
    if (m_sheen.size() == count && m_sheenLayer == layer && m_sheenOpacity == opacity)
        return;
    m_sheen.resize(count);
    m_sheenLayer = layer;
    m_sheenOpacity = opacity;
    // The sheen's place along the diagonal: t = (x w + y h) / (w^2 + h^2) in the layer's points.
    const double w = layer.width(), h = layer.height(), norm = w * w + h * h;
    for (int y = 0; y < m_h; ++y)
        for (int x = 0; x < m_w; ++x) {
            const double t = ((x + 0.5) / m_w * w * w + (y + 0.5) / m_h * h * h) / norm;
            m_sheen[std::size_t(y) * std::size_t(m_w) + std::size_t(x)] =
                float(PlayerBackdrop::sheenAlpha(t)) * opacity;
        }
}

void ReflectionRaster::finish(float corner, const std::optional<Glass>& glass, QSizeF layer) {
    corner = std::clamp(corner, 0.0f, float(std::min(m_w, m_h)) / 2);
    const int cornerPixels = std::min(int(std::ceil(corner)), m_w);
    if (glass)
        sheenFor(layer, glass->sheen);
    for (int y = 0; y < m_h; ++y) {
        auto* out = reinterpret_cast<std::uint32_t*>(m_image.scanLine(y));
        const float* p[4] = {plane(0, y), plane(1, y), plane(2, y), plane(3, y)};
        const Row row{p[0],
                      p[1],
                      p[2],
                      p[3],
                      glass ? m_sheen.data() + std::size_t(y) * std::size_t(m_w) : nullptr,
                      glass.value_or(Glass{})};
        packRow(out, row, 0, m_w, 1.0f);
        const float py = float(y) + 0.5f;
        const float dy = std::max({corner - py, py - (float(m_h) - corner), 0.0f});
        if (dy <= 0)
            continue;
        // Within a corner's rows: the coverage of the rounded shape, from the distance to the
        // corner's arc, at each end of the row.
        for (int x : {0, m_w - cornerPixels}) {
            for (int i = x; i < x + cornerPixels; ++i) {
                const float px = float(i) + 0.5f;
                const float dx = std::max({corner - px, px - (float(m_w) - corner), 0.0f});
                if (dx > 0)
                    packRow(out, row, i, i + 1,
                            std::clamp(corner - std::sqrt(dx * dx + dy * dy) + 0.5f, 0.0f, 1.0f));
            }
        }
    }
}

} // namespace MirlPlayer
