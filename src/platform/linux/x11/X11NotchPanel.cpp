#include "platform/linux/x11/X11NotchPanel.h"

#include "platform/linux/x11/WindowFade.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Screens.h"

#include <QEvent>
#include <QMouseEvent>
#include <QWindow>

#include <xcb/xcb.h>

namespace MirlPlayer {

X11NotchPanel::X11NotchPanel(QWindow* window, QObject* parent)
    : QObject(parent)
    , m_window(window) {
    m_fade = new WindowFade(window, this);
    window->installEventFilter(this);
}

X11NotchPanel::~X11NotchPanel() {
    if (m_window)
        m_window->removeEventFilter(this);
}

void X11NotchPanel::configure(QWindow* window) {
    // Unmanaged by the window manager: no frame, no task-bar entry, present on every desktop and
    // always above managed windows; menus (also unmanaged) still open above it.
    window->setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                     Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint);
}

void X11NotchPanel::setLevel(int level) {
    if (m_level == level)
        return;
    m_level = level;
    // Above the menu bar: bring the pill back to the top of the stack. An open card (level 3)
    // stays where it is, so menus and popovers opened later stand over it.
    if (level > 3 && m_window && m_window->isVisible())
        m_window->raise();
}

void X11NotchPanel::setFrame(const QRectF& frame) {
    if (m_frame == frame)
        return;
    m_frame = frame;
    applyGeometry();
}

void X11NotchPanel::setDrawnRect(const QRectF& rect) {
    if (m_drawn == rect)
        return;
    m_drawn = rect;
    applyGeometry();
}

void X11NotchPanel::applyGeometry() {
    if (!m_window)
        return;
    const QRect frame = ScreenFlip::current().toTopLeft(m_frame).toRect();
    QRect target = frame;
    if (const QRectF covered = m_input.windowRect(m_drawn); !covered.isEmpty())
        target = covered.toAlignedRect().translated(frame.topLeft()).intersected(frame);
    if (target.isEmpty())
        target = frame;
    // What is drawn stays where it is on screen while the window's edges move around it.
    if (!m_staticGravity && m_window->handle()) {
        if (xcb_connection_t* c = X11::connection()) {
            const quint32 gravity = XCB_GRAVITY_STATIC;
            xcb_change_window_attributes(c, xcb_window_t(m_window->winId()), XCB_CW_BIT_GRAVITY,
                                         &gravity);
            m_staticGravity = true;
        }
    }
    const QPoint offset = target.topLeft() - frame.topLeft();
    if (offset != m_offset) {
        m_offset = offset;
        if (onContentOffset)
            onContentOffset(offset);
    }
    const bool moves = m_window->geometry() != target;
    // The input region is relative to the window's origin: across a move it would stand in the
    // wrong place for a moment, and a window that learns of the pointer only through its input
    // region would hear a leave under a still pointer. So it is opened wide across the move.
    const bool widen = moves && m_input.watchesHover && m_window->handle();
    if (widen)
        m_region.apply(m_window->winId(), PanelInputRegion::everywhere);
    if (moves)
        m_window->setGeometry(target);
    applyInputRegion(widen);
}

void X11NotchPanel::orderFrontRegardless() {
    if (!m_window)
        return;
    if (!m_window->isVisible()) {
        m_window->show();
        m_staticGravity = false; // the native window may be new
        applyGeometry();
        applyInputRegion(true);
    }
    m_window->raise();
}

void X11NotchPanel::orderOut() {
    if (m_window)
        m_window->hide();
}

void X11NotchPanel::setIgnoresMouseEvents(bool ignores) {
    if (m_input.ignoresMouse == ignores)
        return;
    m_input.ignoresMouse = ignores;
    applyInputRegion();
}

void X11NotchPanel::setHitRect(const QRectF& rect) {
    if (m_input.hitRect == rect)
        return;
    m_input.hitRect = rect;
    applyInputRegion();
}

void X11NotchPanel::setHoverRect(const QRectF& rect) {
    if (m_input.hoverRect == rect)
        return;
    m_input.hoverRect = rect;
    if (m_input.watchesHover)
        applyGeometry(); // the window grows to it, and applies the input region
}

void X11NotchPanel::setWatchesHover(bool watches) {
    if (m_input.watchesHover == watches)
        return;
    m_input.watchesHover = watches;
    applyGeometry();
}

void X11NotchPanel::applyInputRegion(bool force) {
    if (!m_window || !m_window->handle())
        return;
    QRect region;
    if (const QRectF input = m_input.inputRect(); !input.isEmpty()) {
        const double dpr = m_window->devicePixelRatio();
        const QRectF r = input.translated(-m_offset); // the window starts at the offset
        region =
            QRectF(r.x() * dpr, r.y() * dpr, r.width() * dpr, r.height() * dpr).toAlignedRect();
    }
    if (!force && m_everApplied && region == m_applied)
        return;
    m_applied = region;
    m_everApplied = true;
    m_region.apply(m_window->winId(), region);
}

void X11NotchPanel::animateAlpha(double alpha, double seconds) {
    m_fade->start(alpha, seconds);
}

void X11NotchPanel::resignKey() {
    if (onResignKey)
        onResignKey();
    if (!m_window)
        return;
    const bool hadKeyboard = m_window->isActive();
    m_window->setFlag(Qt::WindowDoesNotAcceptFocus, true);
    // Hand the keyboard back to whatever lies under the pointer, as if the panel never had it.
    if (hadKeyboard)
        m_region.releaseKeyboard();
}

bool X11NotchPanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_window)
        return QObject::eventFilter(watched, event);
    const auto type = event->type();
    if (type != QEvent::MouseButtonPress && type != QEvent::MouseButtonRelease)
        return QObject::eventFilter(watched, event);
    auto* mouse = static_cast<QMouseEvent*>(event);
    if (type == QEvent::MouseButtonPress && mouse->button() == Qt::RightButton) {
        if (onContextMenu && onContextMenu(mouse->globalPosition().toPoint()))
            return true; // consumed: the view never sees it
    } else if (type == QEvent::MouseButtonPress && mouse->button() == Qt::LeftButton) {
        // Decided before the view sees the press, so a text field gets its first click.
        pointerDownInPanel = true;
        textFocusRequested =
            libraryAcceptsKeyboard && editableTextAt && editableTextAt(mouse->position());
        if (canBecomeKey()) {
            m_window->setFlag(Qt::WindowDoesNotAcceptFocus, false);
            m_window->requestActivate();
        } else if (m_window->isActive()) {
            resignKey();
        }
    } else if (type == QEvent::MouseButtonRelease && mouse->button() == Qt::LeftButton) {
        pointerDownInPanel = false;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace MirlPlayer
