#pragma once

#include "visualizers/views/GLSpectrumNode.h"
#include "visualizers/views/RendererMath.h"

#include <QOpenGLShaderProgram>
#include <vector>

namespace MirlPlayer {

// The neon waterfall: 128 x 64 thin spikes, each a quad that the vertex shader makes from the
// vertex index and a buffer of heights (row 0 the newest), drawn twice with additive blending: a
// wide halo and a thin core.
class NeonWaterfallRenderer final : public GLSpectrumNode {
public:
    static constexpr int cols = 128;
    static constexpr int rows = 64;

    ~NeonWaterfallRenderer() override;

    // From the view: the history and the tuning values of this frame.
    void setHeights(const std::vector<float>& heights);
    void setTuning(double glow, double height, double depth);

protected:
    bool create() override;
    void draw(QSize pixels) override;
    void destroy() override;

private:
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    unsigned m_vertexArray = 0;
    unsigned m_heightsBuffer = 0;
    unsigned m_heightsTexture = 0;
    std::vector<float> m_heights = std::vector<float>(cols * rows, 0.0f);
    bool m_heightsDirty = true;
    double m_glow = 0, m_height = 1, m_depth = 1;
};

} // namespace MirlPlayer
