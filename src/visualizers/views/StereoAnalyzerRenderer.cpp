#include "visualizers/views/StereoAnalyzerRenderer.h"

#include "visualizers/views/RendererMath.h"
#include "visualizers/views/VisualizerLog.h"

#include <QOpenGLFunctions_3_3_Core>

namespace MirlPlayer {

StereoAnalyzerRenderer::~StereoAnalyzerRenderer() {
    releaseResources();
}

void StereoAnalyzerRenderer::setHeights(const std::vector<float>& heights) {
    m_heights = heights;
    m_heightsDirty = true;
}

std::vector<float> StereoAnalyzerRenderer::gridPositions() {
    std::vector<float> grid;
    grid.reserve(timeCols * stereoRows * 2);
    for (int t = 0; t < timeCols; ++t)
        for (int r = 0; r < stereoRows; ++r) {
            const float w = float(r) / float(stereoRows - 1);
            grid.push_back(float(t) / float(timeCols - 1));
            grid.push_back((2 * w - 1) / 3 + 0.5f);
        }
    return grid;
}

std::vector<unsigned> StereoAnalyzerRenderer::triangleIndices() {
    std::vector<unsigned> out;
    for (unsigned t = 0; t + 1 < timeCols; ++t)
        for (unsigned r = 0; r + 1 < stereoRows; ++r) {
            const unsigned a = t * stereoRows + r;
            out.insert(out.end(),
                       {a, a + stereoRows, a + 1, a + 1, a + stereoRows, a + stereoRows + 1});
        }
    return out;
}

std::vector<float> StereoAnalyzerRenderer::gridLines() {
    std::vector<float> out;
    const auto segment = [&](float u0, float v0, float z0, float u1, float v1, float z1, float b) {
        out.insert(out.end(), {u0, v0, z0, b, u1, v1, z1, b});
    };
    for (int k = 0; k <= 10; ++k)
        segment(k / 10.0f, 0, 0, k / 10.0f, 1, 0, 0.26f);
    for (int k = 0; k <= 6; ++k)
        segment(0, k / 6.0f, 0, 1, k / 6.0f, 0, k == 3 ? 0.95f : 0.26f);
    segment(1, 0, 1, 1, 1, 1, 0.55f);
    segment(1, 0, 0, 1, 0, 1, 0.55f);
    segment(1, 1, 0, 1, 1, 1, 0.55f);
    for (int k = 1; k <= 5; ++k)
        segment(1, k / 6.0f, 0, 1, k / 6.0f, 0.5f, 0.6f);
    segment(0, 0, 0, 0, 0, 1, 0.55f);
    segment(0, 0, 1, 0.07f, 0, 1, 0.55f);
    segment(0, 0, 1, 0, 0.14f, 1, 0.55f);
    return out;
}

bool StereoAnalyzerRenderer::create() {
    m_surface = program("analyzer_surface.vert", "analyzer.frag");
    m_lines = program("analyzer_line.vert", "analyzer.frag");
    m_composite = program("composite.vert", "composite.frag");
    if (!m_surface || !m_lines || !m_composite)
        return false;
    auto* f = gl();
    f->glGenBuffers(4, m_buffers);
    f->glGenVertexArrays(1, &m_surfaceArray);
    f->glBindVertexArray(m_surfaceArray);
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
    m_triangleCount = int(triangles.size());
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[2]);
    f->glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(triangles.size() * sizeof(unsigned)),
                    triangles.data(), GL_STATIC_DRAW);

    f->glGenVertexArrays(1, &m_lineArray);
    f->glBindVertexArray(m_lineArray);
    const auto lines = gridLines();
    m_lineCount = int(lines.size() / 4);
    f->glBindBuffer(GL_ARRAY_BUFFER, m_buffers[3]);
    f->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(lines.size() * sizeof(float)), lines.data(),
                    GL_STATIC_DRAW);
    f->glEnableVertexAttribArray(0);
    f->glVertexAttribPointer(0, 4, GL_FLOAT, GL_FALSE, 0, nullptr);

    // The composite's triangle comes from the vertex index alone.
    f->glGenVertexArrays(1, &m_emptyArray);
    f->glBindVertexArray(0);
    m_heightsDirty = true;
    return true;
}

void StereoAnalyzerRenderer::freeTarget() {
    auto* f = gl();
    f->glDeleteFramebuffers(1, &m_framebuffer);
    f->glDeleteTextures(1, &m_sceneTex);
    f->glDeleteRenderbuffers(1, &m_depth);
    m_framebuffer = m_sceneTex = m_depth = 0;
    m_texSize = {};
}

void StereoAnalyzerRenderer::destroy() {
    freeTarget();
    auto* f = gl();
    f->glDeleteBuffers(4, m_buffers);
    f->glDeleteVertexArrays(1, &m_surfaceArray);
    f->glDeleteVertexArrays(1, &m_lineArray);
    f->glDeleteVertexArrays(1, &m_emptyArray);
    m_surface.reset();
    m_lines.reset();
    m_composite.reset();
}

bool StereoAnalyzerRenderer::ensureTarget(QSize pixels) {
    if (m_framebuffer && pixels == m_texSize)
        return true;
    freeTarget();
    auto* f = gl();
    f->glGenTextures(1, &m_sceneTex);
    f->glBindTexture(GL_TEXTURE_2D, m_sceneTex);
    f->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16F, pixels.width(), pixels.height(), 0, GL_RGBA,
                    GL_HALF_FLOAT, nullptr);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    f->glBindTexture(GL_TEXTURE_2D, 0);
    f->glGenRenderbuffers(1, &m_depth);
    f->glBindRenderbuffer(GL_RENDERBUFFER, m_depth);
    f->glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT32F, pixels.width(),
                             pixels.height());
    f->glBindRenderbuffer(GL_RENDERBUFFER, 0);
    f->glGenFramebuffers(1, &m_framebuffer);
    f->glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    f->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_sceneTex, 0);
    f->glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth);
    if (f->glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        logNoGpuOnce("no half-float render target");
        freeTarget();
        return false;
    }
    m_texSize = pixels;
    return true;
}

void StereoAnalyzerRenderer::draw(QSize pixels) {
    if (!ensureTarget(pixels)) {
        bindTarget();
        return;
    }
    auto* f = gl();
    if (m_heightsDirty) {
        f->glBindBuffer(GL_ARRAY_BUFFER, m_buffers[1]);
        f->glBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(m_heights.size() * sizeof(float)),
                           m_heights.data());
        m_heightsDirty = false;
    }
    const float aspect = float(pixels.width()) / float(pixels.height());
    const auto u =
        RendererMath::analyzerUniforms(aspect, m_tuning.width, m_tuning.height, m_tuning.depth,
                                       m_tuning.hue, m_tuning.sensitivity, m_tuning.grid);

    // The scene, off screen.
    f->glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    f->glViewport(0, 0, pixels.width(), pixels.height());
    f->glDisable(GL_SCISSOR_TEST);
    f->glClearColor(0, 0, 0, 0);
    f->glClearDepth(1.0);
    f->glDepthMask(GL_TRUE);
    f->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    f->glEnable(GL_BLEND);
    f->glBlendEquation(GL_FUNC_ADD);
    f->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    f->glEnable(GL_DEPTH_TEST);
    for (QOpenGLShaderProgram* p : {m_lines.get(), m_surface.get()}) {
        p->bind();
        p->setUniformValue("mvp", u.mvp);
        p->setUniformValue("params", u.params);
        p->setUniformValue("params2", u.params2);
        setRampUniform(*p);
    }
    // The grid first, writing depth; the surface only tests it, so its translucent edges leave
    // the grid visible.
    m_lines->bind();
    f->glDepthFunc(GL_LESS);
    f->glBindVertexArray(m_lineArray);
    f->glDrawArrays(GL_LINES, 0, m_lineCount);
    m_surface->bind();
    f->glDepthFunc(GL_LEQUAL);
    f->glDepthMask(GL_FALSE);
    f->glBindVertexArray(m_surfaceArray);
    f->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[2]);
    f->glDrawElements(GL_TRIANGLES, m_triangleCount, GL_UNSIGNED_INT, nullptr);
    f->glDepthMask(GL_TRUE);

    // The composite with its bloom, laid over the card as a premultiplied layer.
    bindTarget();
    f->glDisable(GL_DEPTH_TEST);
    f->glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    m_composite->bind();
    m_composite->setUniformValue("scene", 0);
    m_composite->setUniformValue("bloomAmount", float(m_tuning.bloom));
    f->glActiveTexture(GL_TEXTURE0);
    f->glBindTexture(GL_TEXTURE_2D, m_sceneTex);
    f->glBindVertexArray(m_emptyArray);
    f->glDrawArrays(GL_TRIANGLES, 0, 3);
}

} // namespace MirlPlayer
