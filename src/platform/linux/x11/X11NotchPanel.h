#pragma once

#include "platform/NotchPanel.h"
#include "platform/linux/x11/PanelInputRegion.h"
#include "platform/linux/x11/X11InputRegion.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <functional>

class QWindow;

namespace MirlPlayer {

class WindowFade;

// Drives a Qt window as the notch panel on X11: frame in screen points, stacking, fading, and
// click-through everywhere except the hit rectangle by an XShape input region (drawing is left
// whole); under XWayland the input region and the window cover the hover rectangle as well. It also
// notes presses inside the window for the controller's drag rule. The frame is the panel's
// coordinate space; the X window itself covers only the drawn part of it (`setDrawnRect`), so the
// server, the compositor and the rasteriser handle no more pixels than the pill or the card has.
// Its content is offset to match, and the window's bit gravity is static, so what is drawn keeps
// its screen pixels while the window grows or shrinks.
class X11NotchPanel : public QObject, public NotchPanel {
    Q_OBJECT
public:
    explicit X11NotchPanel(QWindow* window, QObject* parent = nullptr);
    ~X11NotchPanel() override;

    // The window flags of a panel: frameless, above other windows, on every desktop, never
    // focused by a click. Call before the window is first shown.
    static void configure(QWindow* window);

    void setLevel(int level) override;
    QRectF frame() const override { return m_frame; }
    void setFrame(const QRectF& frame) override;
    // The part of the frame the window covers, in the frame's own coordinates (top-left origin,
    // as the view draws); empty for the whole frame.
    void setDrawnRect(const QRectF& rect);
    // Where the window's top left lies in the frame (logical pixels): the view's content is
    // moved up and left by this much.
    QPoint contentOffset() const { return m_offset; }
    std::function<void(QPoint)> onContentOffset;
    void orderFrontRegardless() override;
    void orderOut() override;
    void setIgnoresMouseEvents(bool ignores) override;
    void setHitRect(const QRectF& rect) override;
    void setHoverRect(const QRectF& rect) override;
    // Under XWayland: the window takes the pointer over the hover rectangle as well, so that its
    // own events can tell where the pointer is.
    void setWatchesHover(bool watches);
    void animateAlpha(double alpha, double seconds) override;
    void resignKey() override;

    int level() const { return m_level; }
    // The input region now applied, in window pixels; empty means click-through everywhere.
    QRect inputRegion() const { return m_applied; }
    // Called by `resignKey`, so the view can clear its focused item.
    std::function<void()> onResignKey;
    // Answers whether an editable text field lies under a point of the window; with the library
    // open, a press there gives the panel the keyboard.
    std::function<bool(QPointF)> editableTextAt;
    // The context menu for a right press at a global position; true when a menu was shown, and
    // the press then goes no further.
    std::function<bool(QPoint)> onContextMenu;
    // The panel may take the keyboard only for a text field in the open library.
    bool canBecomeKey() const { return libraryAcceptsKeyboard && textFocusRequested; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyInputRegion(bool force = false);
    void applyGeometry();

    QPointer<QWindow> m_window;
    X11InputRegion m_region;
    QRectF m_frame;
    QRectF m_drawn;
    QPoint m_offset;
    bool m_staticGravity = false;
    int m_level = 0;
    PanelInputRegion m_input;
    QRect m_applied{0, 0, -1, -1};
    bool m_everApplied = false;
    WindowFade* m_fade = nullptr;
};

} // namespace MirlPlayer
