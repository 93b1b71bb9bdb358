#pragma once

#include <QList>
#include <QRect>
#include <QSGRenderNode>
#include <QVector4D>
#include <memory>

class QOpenGLFunctions_3_3_Core;
class QOpenGLShaderProgram;

namespace MirlPlayer {

// The common ground of the GPU styles: an OpenGL 3.3 render node inside the Qt Quick scene graph
// that draws into its item's rectangle of the window. The GL objects are made on the first frame
// with the context current; without a usable context, or when a shader fails, the node draws
// nothing and says so once in the log. A derived node's destructor calls releaseResources().
class GLSpectrumNode : public QSGRenderNode {
public:
    ~GLSpectrumNode() override;

    void render(const RenderState* state) final;
    void releaseResources() override;
    StateFlags changedStates() const override;
    RenderingFlags flags() const override;
    QRectF rect() const override { return m_rect; }

    void setRect(const QRectF& rect) { m_rect = rect; }
    // Where the item is in the window, in pixels from the top left, and the window's size.
    void setPlace(const QRect& place, QSize target) {
        m_place = place;
        m_targetSize = target;
    }
    // The 96 colours of the skin's spectrum, lows first.
    void setRamp(const QList<QVector4D>& ramp) { m_ramp = ramp; }

protected:
    // With the context current: make the GL objects. False when that failed.
    virtual bool create() = 0;
    // One frame into the item's rectangle, whose size in pixels is `pixels`; viewport and scissor
    // are set, the depth buffer of that rectangle is clear.
    virtual void draw(QSize pixels) = 0;
    // With the context current: free the GL objects.
    virtual void destroy() = 0;

    QOpenGLFunctions_3_3_Core* gl() const { return m_gl; }
    // A program from two shader files of the resources; null (and a line in the log) on failure.
    std::unique_ptr<QOpenGLShaderProgram> program(const char* vertex, const char* fragment);
    void setRampUniform(QOpenGLShaderProgram& program);
    // The item's rectangle in the window's framebuffer, as the last frame found it.
    QRect viewport() const { return m_viewport; }
    // Binds this framebuffer and the item's viewport again after an off-screen pass.
    void bindTarget();

private:
    enum class Status { fresh, ready, failed };
    Status m_status = Status::fresh;
    QOpenGLFunctions_3_3_Core* m_gl = nullptr;
    QRectF m_rect;
    QRect m_viewport;
    QRect m_scissor;
    QRect m_place;
    QSize m_targetSize;
    int m_targetFramebuffer = 0;
    QList<QVector4D> m_ramp;
};

} // namespace MirlPlayer
