#pragma once

#include "look/Reflection.h"

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <vector>

namespace MirlPlayer {

// Rasterises a frame of the light straight into pixels: each blob adds its colour with the
// opacity (1 - x^2)^2 at the share x of its radius, the wash the same down from the top edge,
// summed and clipped at full light like additive drawing, inside the layer's rounded corners.
// A painter would build a gradient table for every blob of every frame; this costs a few
// operations per pixel a blob covers, and the image may be smaller than the layer.
class ReflectionRaster {
public:
    // `pixels` is the image's size; it shows the `layer`'s size in points.
    const QImage& draw(const ReflectionFrame& frame, QSize pixels, QSizeF layer,
                       double cornerRadius);

private:
    void addBlob(const LightBlob& blob, float sx, float sy);
    void addWash(const LightBlob& wash, float sy);
    void finish(float cornerRadius);
    float* plane(int channel, int y);

    int m_w = 0;
    int m_h = 0;
    std::vector<float> m_sum; // planes of premultiplied red, green, blue and alpha
    QImage m_image;
};

} // namespace MirlPlayer
