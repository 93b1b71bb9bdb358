#include "visualizers/views/StereoWaterfallRenderer.h"

#include "visualizers/views/RendererMath.h"

#include <QOpenGLFunctions_3_3_Core>

namespace MirlPlayer {

StereoWaterfallRenderer::~StereoWaterfallRenderer() {
    releaseResources();
}

void StereoWaterfallRenderer::setHeights(const std::vector<float>& heights) {
    m_heights = heights;
    m_heightsDirty = true;
}

void StereoWaterfallRenderer::setTuning(double height, double depth) {
    m_height = height;
    m_depth = depth;
}

std::vector<float> StereoWaterfallRenderer::gridPositions() {
    std::vector<float> grid;
    grid.reserve(cols * rows * 2);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < cols; ++c) {
            grid.push_back(float(c) / float(cols - 1));
            grid.push_back(float(r) / float(rows - 1));
        }
    return grid;
}

std::vector<unsigned> StereoWaterfallRenderer::triangleIndices() {
    std::vector<unsigned> out;
    for (unsigned r = 0; r + 1 < rows; ++r)
        for (unsigned c = 0; c + 1 < cols; ++c) {
            const unsigned a = r * cols + c;
            out.insert(out.end(), {a, a + cols, a + 1, a + 1, a + cols, a + cols + 1});
        }
    return out;
}

std::vector<unsigned> StereoWaterfallRenderer::lineIndices() {
    std::vector<unsigned> out;
    for (unsigned r = 0; r < rows; ++r)
        for (unsigned c = 0; c + 1 < cols; ++c)
            out.insert(out.end(), {r * cols + c, r * cols + c + 1});
    for (unsigned c = 0; c < cols; ++c)
        for (unsigned r = 0; r + 1 < rows; ++r)
            out.insert(out.end(), {r * cols + c, (r + 1) * cols + c});
    return out;
}

bool StereoWaterfallRenderer::create() {
    m_program = program("stereowaterfall.vert", "stereowaterfall.frag");
    if (!m_program)
        return false;
    auto* f = gl();
    f->glGenVertexArrays(1, &m_vertexArray);
    f->glBindVertexArray(m_vertexArray);
    f->glGenBuffers(4, m_buffers);
    const auto grid = gridPositions();
    f->glBindBuffer(GL_ARRAY_BUFFER, m_buffers[0]);
    f->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(grid.size() * sizeof(float)), grid.data(),
                    GL_STATIC_DRAW);
    f->glEnableVertexAttribArray(0);
    f->glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    f->glBindBuffer(GL_ARRAY_BUFFER, m_buffers[1]);
    f->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(m_heights.size() * sizeof(float)), nullptr,
                    GL_DYNAMIC_DRAW);
    f->glEnableVertexAttribArray(1);
    f->glVertexAttribPointer(1, 1, GL_FLOAT, GL_FALSE, 0, nullptr);
    const auto triangles = triangleIndices();
    const auto lines = lineIndices();
    m_triangleCount = int(triangles.size());
    m_lineCount = int(lines.size());
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[2]);
    f->glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(triangles.size() * sizeof(unsigned)),
                    triangles.data(), GL_STATIC_DRAW);
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[3]);
    f->glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(lines.size() * sizeof(unsigned)),
                    lines.data(), GL_STATIC_DRAW);
    f->glBindVertexArray(0);
    m_heightsDirty = true;
    return true;
}

void StereoWaterfallRenderer::destroy() {
    gl()->glDeleteBuffers(4, m_buffers);
    gl()->glDeleteVertexArrays(1, &m_vertexArray);
    m_program.reset();
}

void StereoWaterfallRenderer::draw(QSize pixels) {
    auto* f = gl();
    f->glBindVertexArray(m_vertexArray);
    if (m_heightsDirty) {
        f->glBindBuffer(GL_ARRAY_BUFFER, m_buffers[1]);
        f->glBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(m_heights.size() * sizeof(float)),
                           m_heights.data());
        m_heightsDirty = false;
    }
    const float aspect = float(pixels.width()) / float(pixels.height());
    const auto u = RendererMath::stereoWaterfallUniforms(aspect, m_height, m_depth);
    m_program->bind();
    m_program->setUniformValue("mvp", u.mvp);
    m_program->setUniformValue("params", u.params);
    setRampUniform(*m_program);

    // The surface: opaque, writing depth.
    f->glEnable(GL_DEPTH_TEST);
    f->glDepthFunc(GL_LESS);
    f->glDepthMask(GL_TRUE);
    f->glDisable(GL_BLEND);
    m_program->setUniformValue("mode", QVector4D(0, 0, 0, 0));
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[2]);
    f->glDrawElements(GL_TRIANGLES, m_triangleCount, GL_UNSIGNED_INT, nullptr);

    // The wireframe just above it, blended, testing but not writing depth.
    f->glDepthFunc(GL_LEQUAL);
    f->glDepthMask(GL_FALSE);
    f->glEnable(GL_BLEND);
    f->glBlendEquation(GL_FUNC_ADD);
    f->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    m_program->setUniformValue("mode", QVector4D(1, 0, 0, 0));
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[3]);
    f->glDrawElements(GL_LINES, m_lineCount, GL_UNSIGNED_INT, nullptr);
    f->glDepthMask(GL_TRUE);
}

} // namespace MirlPlayer
