#pragma once

#include "visualizers/views/GLSpectrumNode.h"

#include <QOpenGLShaderProgram>
#include <vector>

namespace MirlPlayer {

// The stereo analyzer: 256 columns of stereo history (time to the right, newest at the right
// edge; hard left at the top, hard right at the bottom) as a surface lifted towards the viewer in
// front of a measuring grid. The scene goes to an off-screen half-float texture, so colours above
// 1 survive, and is then composited with a bright-pass bloom.
class StereoAnalyzerRenderer final : public GLSpectrumNode {
public:
    static constexpr int timeCols = 256;
    static constexpr int stereoRows = 96;

    ~StereoAnalyzerRenderer() override;

    void setHeights(const std::vector<float>& heights);
    struct Tuning {
        double width = 1.6, height = 0.78, depth = 0.86, sensitivity = 0.8, grid = 1, bloom = 1.5;
        double hue = 0;
    };
    void setTuning(const Tuning& tuning) { m_tuning = tuning; }

    // Grid positions (u, v) per vertex; the curve fills the middle two thirds of the height.
    static std::vector<float> gridPositions();
    static std::vector<unsigned> triangleIndices();
    // The measuring grid: (u, v, z, brightness) per vertex, two vertices per segment.
    static std::vector<float> gridLines();

protected:
    bool create() override;
    void draw(QSize pixels) override;
    void destroy() override;

private:
    bool ensureTarget(QSize pixels);
    void freeTarget();

    std::unique_ptr<QOpenGLShaderProgram> m_surface, m_lines, m_composite;
    unsigned m_surfaceArray = 0, m_lineArray = 0, m_emptyArray = 0;
    unsigned m_buffers[4] = {}; // grid, heights, triangle indices, line vertices
    int m_triangleCount = 0;
    int m_lineCount = 0;
    unsigned m_framebuffer = 0, m_sceneTex = 0, m_depth = 0;
    QSize m_texSize;
    std::vector<float> m_heights = std::vector<float>(timeCols * stereoRows, 0.0f);
    bool m_heightsDirty = true;
    Tuning m_tuning;
};

} // namespace MirlPlayer
