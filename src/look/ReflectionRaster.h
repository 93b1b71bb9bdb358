#pragma once

#include "look/Reflection.h"

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <optional>
#include <vector>

namespace MirlPlayer {

// Rasterises a frame of the light straight into pixels: each blob adds its colour with the
// opacity (1 - x^2)^2 at the share x of its radius, the wash the same down from the top edge,
// summed and clipped at full light like additive drawing, inside the layer's rounded corners.
// A painter would build a gradient table for every blob of every frame; this costs a few
// operations per pixel a blob covers, and the image may be smaller than the layer. Given the
// glass, it draws the glass with the light in it: soft all over but for the corners, which the
// rim covers.
class ReflectionRaster {
public:
    // The glass the light may be drawn into, so that glass and light are one picture: the frost
    // and veil (premultiplied), the light's opacity over it, and the sheen's over both.
    struct Glass {
        float r = 0, g = 0, b = 0, a = 0;
        float light = 1;
        float sheen = 0;
    };

    // `pixels` is the image's size; it shows the `layer`'s size in points.
    const QImage& draw(const ReflectionFrame& frame, QSize pixels, QSizeF layer,
                       double cornerRadius, const std::optional<Glass>& glass = {});

private:
    void addBlob(const LightBlob& blob, float sx, float sy);
    void addWash(const LightBlob& wash, float sy);
    void finish(float cornerRadius, const std::optional<Glass>& glass, QSizeF layer);
    float* plane(int channel, int y);
    void sheenFor(QSizeF layer, float opacity);

    int m_w = 0;
    int m_h = 0;
    std::vector<float> m_sum;   // planes of premultiplied red, green, blue and alpha
    std::vector<float> m_sheen; // the sheen's opacity at each pixel, kept while the layer is
    QSizeF m_sheenLayer;        // the same size with the same opacity
    float m_sheenOpacity = -1;
    QImage m_image;
};

} // namespace MirlPlayer
