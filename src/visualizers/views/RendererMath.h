#pragma once

#include <QMatrix4x4>
#include <QVector4D>

namespace MirlPlayer {

// The camera and uniform values of the three GPU styles, computed from the drawable's aspect
// (width / height) and the tuning values. Projections are right-handed perspectives in OpenGL's
// clip space.
namespace RendererMath {

// Projection x view, with the vertical field of view in radians.
QMatrix4x4 camera(float fovY, float aspect, QVector3D eye, QVector3D target);

// The half-width of the waterfall landscapes: 0.85 of the aspect, from 1.6 up to 11.
float landscapeSpan(float aspect);

struct NeonUniforms {
    QMatrix4x4 mvp;
    QVector4D params; // xspan, yscale, zspan, halfW
    QVector4D grid;   // cols, rows, ramp length, pass (0 halo, 1 core)
    QVector4D extra;  // glow, 0, 0, 0
};
enum class NeonPass { halo = 0, core = 1 };
NeonUniforms neonUniforms(float aspect, NeonPass pass, double glow, double height, double depth);

struct StereoWaterfallUniforms {
    QMatrix4x4 mvp;
    QVector4D params; // yscale, xspan, zspan, lineLift
};
StereoWaterfallUniforms stereoWaterfallUniforms(float aspect, double height, double depth);

struct AnalyzerUniforms {
    QMatrix4x4 mvp;
    QVector4D params;  // halfW, halfH, depth, hue
    QVector4D params2; // sensDivisor, gridOpacity, 0, 0
};
AnalyzerUniforms analyzerUniforms(float aspect, double width, double height, double depth,
                                  double hue, double sensitivity, double grid);

} // namespace RendererMath

} // namespace MirlPlayer
