#pragma once

#include "platform/linux/x11/X11Handles.h"

#include <QRect>
#include <QVector>

namespace MirlPlayer {

// Asks the compositor to blur what lies behind part of a window, where the compositor offers it
// (KWin's `_KDE_NET_WM_BLUR_BEHIND_REGION`, announced on the root window while its blur is on).
// The region follows the drawn shape; nothing of the screen is ever read by the program.
class X11BlurBehind {
public:
    X11BlurBehind();
    ~X11BlurBehind();
    X11BlurBehind(const X11BlurBehind&) = delete;
    X11BlurBehind& operator=(const X11BlurBehind&) = delete;

    // Whether a compositor that blurs behind windows is running now.
    bool available();
    // Sets the blurred region of window `window`, in its own pixels; empty removes the blur.
    // A region equal to the one set last is not sent again.
    void apply(unsigned long window, const QVector<QRect>& region);

private:
    X11::DisplayHandle m_display;
    X11::Atom m_atom = 0;
    QVector<QRect> m_applied;
    bool m_everApplied = false;
};

} // namespace MirlPlayer
