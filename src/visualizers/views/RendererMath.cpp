#include "visualizers/views/RendererMath.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer::RendererMath {

QMatrix4x4 camera(float fovY, float aspect, QVector3D eye, QVector3D target) {
    QMatrix4x4 projection;
    projection.perspective(qRadiansToDegrees(fovY), std::max(aspect, 0.2f), 0.05f, 40.0f);
    QMatrix4x4 view;
    view.lookAt(eye, target, {0, 1, 0});
    return projection * view;
}

float landscapeSpan(float aspect) {
    return std::max(std::min(aspect * 0.85f, 11.0f), 1.6f);
}

NeonUniforms neonUniforms(float aspect, NeonPass pass, double glow, double height, double depth) {
    const float xspan = landscapeSpan(aspect);
    const bool halo = pass == NeonPass::halo;
    const float halfW = halo ? xspan * 0.01f * float(glow * 1.6 + 0.5) : xspan * 0.0035f;
    return {camera(1.0134170055389404f, aspect, {0, 0.92f, 1.5f}, {0, 0.4f, -1.1f}),
            {xspan, float(height), float(depth), halfW},
            {128, 64, 96, halo ? 0.0f : 1.0f},
            {float(glow), 0, 0, 0}};
}

StereoWaterfallUniforms stereoWaterfallUniforms(float aspect, double height, double depth) {
    return {camera(qDegreesToRadians(60.0f), aspect, {0, 0.85f, 1.55f}, {0, 0.66f, -1.05f}),
            {float(height), landscapeSpan(aspect), float(depth), 0.012f}};
}

AnalyzerUniforms analyzerUniforms(float aspect, double width, double height, double depth,
                                  double hue, double sensitivity, double grid) {
    return {camera(0.5817763805389404f, aspect, {-0.08f, 0.15f, 3.0f}, {0, -0.02f, 0.18f}),
            {float(width), float(height), float(depth), float(hue)},
            {float(sensitivity), float(grid), 0, 0}};
}

} // namespace MirlPlayer::RendererMath
