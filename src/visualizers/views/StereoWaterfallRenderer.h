#pragma once

#include "visualizers/views/GLSpectrumNode.h"

#include <QOpenGLShaderProgram>
#include <vector>

namespace MirlPlayer {

// The stereo landscape: 96 columns from hard left to hard right, 96 rows of history going back
// into the distance (row 0 the newest), an opaque surface with depth and a faint wireframe just
// above it.
class StereoWaterfallRenderer final : public GLSpectrumNode {
public:
    static constexpr int cols = 96;
    static constexpr int rows = 96;

    ~StereoWaterfallRenderer() override;

    void setHeights(const std::vector<float>& heights);
    void setTuning(double height, double depth);

    // The mesh, built once: grid positions (column / 95, row / 95) per vertex, two triangles per
    // cell, and the wireframe's segments along every row and then along every column.
    static std::vector<float> gridPositions();
    static std::vector<unsigned> triangleIndices();
    static std::vector<unsigned> lineIndices();

protected:
    bool create() override;
    void draw(QSize pixels) override;
    void destroy() override;

private:
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    unsigned m_vertexArray = 0;
    unsigned m_buffers[4] = {}; // grid, heights, triangle indices, line indices
    int m_triangleCount = 0;
    int m_lineCount = 0;
    std::vector<float> m_heights = std::vector<float>(cols * rows, 0.0f);
    bool m_heightsDirty = true;
    double m_height = 1, m_depth = 1;
};

} // namespace MirlPlayer
