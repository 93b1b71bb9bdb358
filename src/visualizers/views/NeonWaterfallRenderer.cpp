#include "visualizers/views/NeonWaterfallRenderer.h"

#include <QOpenGLFunctions_3_3_Core>

namespace MirlPlayer {

NeonWaterfallRenderer::~NeonWaterfallRenderer() {
    releaseResources();
}

void NeonWaterfallRenderer::setHeights(const std::vector<float>& heights) {
    m_heights = heights;
    m_heightsDirty = true;
}

void NeonWaterfallRenderer::setTuning(double glow, double height, double depth) {
    m_glow = glow;
    m_height = height;
    m_depth = depth;
}

bool NeonWaterfallRenderer::create() {
    m_program = program("neon.vert", "neon.frag");
    if (!m_program)
        return false;
    auto* f = gl();
    f->glGenVertexArrays(1, &m_vertexArray);
    f->glGenBuffers(1, &m_heightsBuffer);
    f->glBindBuffer(GL_TEXTURE_BUFFER, m_heightsBuffer);
    f->glBufferData(GL_TEXTURE_BUFFER, GLsizeiptr(m_heights.size() * sizeof(float)), nullptr,
                    GL_DYNAMIC_DRAW);
    f->glGenTextures(1, &m_heightsTexture);
    f->glBindTexture(GL_TEXTURE_BUFFER, m_heightsTexture);
    f->glTexBuffer(GL_TEXTURE_BUFFER, GL_R32F, m_heightsBuffer);
    f->glBindTexture(GL_TEXTURE_BUFFER, 0);
    f->glBindBuffer(GL_TEXTURE_BUFFER, 0);
    m_heightsDirty = true;
    return true;
}

void NeonWaterfallRenderer::destroy() {
    auto* f = gl();
    f->glDeleteTextures(1, &m_heightsTexture);
    f->glDeleteBuffers(1, &m_heightsBuffer);
    f->glDeleteVertexArrays(1, &m_vertexArray);
    m_program.reset();
}

void NeonWaterfallRenderer::draw(QSize pixels) {
    auto* f = gl();
    if (m_heightsDirty) {
        f->glBindBuffer(GL_TEXTURE_BUFFER, m_heightsBuffer);
        f->glBufferSubData(GL_TEXTURE_BUFFER, 0, GLsizeiptr(m_heights.size() * sizeof(float)),
                           m_heights.data());
        f->glBindBuffer(GL_TEXTURE_BUFFER, 0);
        m_heightsDirty = false;
    }
    const float aspect = float(pixels.width()) / float(pixels.height());
    f->glBindVertexArray(m_vertexArray);
    f->glActiveTexture(GL_TEXTURE0);
    f->glBindTexture(GL_TEXTURE_BUFFER, m_heightsTexture);
    f->glDisable(GL_DEPTH_TEST);
    f->glEnable(GL_BLEND);
    f->glBlendEquation(GL_FUNC_ADD);
    f->glBlendFunc(GL_ONE, GL_ONE);
    m_program->bind();
    m_program->setUniformValue("heights", 0);
    setRampUniform(*m_program);
    for (auto pass : {RendererMath::NeonPass::halo, RendererMath::NeonPass::core}) {
        const auto u = RendererMath::neonUniforms(aspect, pass, m_glow, m_height, m_depth);
        m_program->setUniformValue("mvp", u.mvp);
        m_program->setUniformValue("params", u.params);
        m_program->setUniformValue("grid", u.grid);
        m_program->setUniformValue("extra", u.extra);
        f->glDrawArrays(GL_TRIANGLES, 0, cols * rows * 6);
    }
    f->glBindTexture(GL_TEXTURE_BUFFER, 0);
}

} // namespace MirlPlayer
