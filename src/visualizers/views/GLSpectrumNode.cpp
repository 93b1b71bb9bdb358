#include "visualizers/views/GLSpectrumNode.h"

#include "visualizers/views/VisualizerLog.h"

#include <QFile>
#include <QOpenGLContext>
#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>
#include <QOpenGLVersionFunctionsFactory>
#include <cmath>

namespace MirlPlayer {

GLSpectrumNode::~GLSpectrumNode() = default;

void GLSpectrumNode::releaseResources() {
    if (m_status == Status::ready && QOpenGLContext::currentContext())
        destroy();
    m_status = Status::fresh;
    m_gl = nullptr;
}

QSGRenderNode::StateFlags GLSpectrumNode::changedStates() const {
    return DepthState | StencilState | ScissorState | ColorState | BlendState | CullState |
           ViewportState | RenderTargetState;
}

QSGRenderNode::RenderingFlags GLSpectrumNode::flags() const {
    return BoundedRectRendering;
}

std::unique_ptr<QOpenGLShaderProgram> GLSpectrumNode::program(const char* vertex,
                                                              const char* fragment) {
    auto p = std::make_unique<QOpenGLShaderProgram>();
    const auto source = [](const char* name) {
        QFile file(QStringLiteral(":/visualizers/shaders/") + QLatin1String(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    if (!p->addShaderFromSourceCode(QOpenGLShader::Vertex, source(vertex)) ||
        !p->addShaderFromSourceCode(QOpenGLShader::Fragment, source(fragment)) || !p->link()) {
        qCWarning(lcVisualizers) << "shader" << vertex << fragment << "failed:" << p->log();
        return nullptr;
    }
    return p;
}

void GLSpectrumNode::setRampUniform(QOpenGLShaderProgram& program) {
    program.setUniformValueArray("ramp", m_ramp.constData(), int(m_ramp.size()));
}

void GLSpectrumNode::bindTarget() {
    m_gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(m_targetFramebuffer));
    m_gl->glViewport(m_viewport.x(), m_viewport.y(), m_viewport.width(), m_viewport.height());
    m_gl->glEnable(GL_SCISSOR_TEST);
    m_gl->glScissor(m_scissor.x(), m_scissor.y(), m_scissor.width(), m_scissor.height());
}

void GLSpectrumNode::render(const RenderState* state) {
    if (m_status == Status::failed)
        return;
    if (m_status == Status::fresh) {
        QOpenGLContext* context = QOpenGLContext::currentContext();
        const auto version = context ? context->format().version() : qMakePair(0, 0);
        if (context && !context->isOpenGLES() && version >= qMakePair(3, 3))
            m_gl = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_3_Core>(context);
        if (!m_gl || !m_gl->initializeOpenGLFunctions()) {
            logNoGpuOnce("no OpenGL 3.3 context");
            m_status = Status::failed;
            return;
        }
        m_status = create() ? Status::ready : Status::failed;
        if (m_status == Status::failed)
            return;
    }
    // Framebuffer rows count from the bottom.
    m_viewport = QRect(m_place.x(), m_targetSize.height() - m_place.bottom() - 1, m_place.width(),
                       m_place.height());
    // A clipping ancestor (the card while it grows) clips the style too.
    m_scissor = state->scissorEnabled() ? m_viewport & state->scissorRect() : m_viewport;
    if (m_viewport.isEmpty() || m_scissor.isEmpty())
        return;
    GLint framebuffer = 0, vertexArray = 0;
    m_gl->glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    m_gl->glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &vertexArray);
    m_targetFramebuffer = framebuffer;
    bindTarget();
    // The scene's own depth values mean nothing to a 3D style: start its rectangle clear.
    m_gl->glDepthMask(GL_TRUE);
    m_gl->glClearDepth(1.0);
    m_gl->glClear(GL_DEPTH_BUFFER_BIT);
    m_gl->glDisable(GL_CULL_FACE);
    m_gl->glDisable(GL_STENCIL_TEST);
    m_gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    draw(m_viewport.size());
    // Leave what the scene graph does not reset itself as it was.
    m_gl->glBindVertexArray(GLuint(vertexArray));
    m_gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(framebuffer));
    m_gl->glUseProgram(0);
    m_gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    m_gl->glActiveTexture(GL_TEXTURE0);
    m_gl->glBindTexture(GL_TEXTURE_2D, 0);
    m_gl->glDisable(GL_DEPTH_TEST);
    m_gl->glDisable(GL_BLEND);
    m_gl->glDisable(GL_SCISSOR_TEST);
}

} // namespace MirlPlayer
