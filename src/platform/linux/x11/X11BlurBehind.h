#pragma once

#include <QElapsedTimer>
#include <QRect>
#include <QVector>

namespace MirlPlayer {

// Asks the compositor to blur what lies behind part of a window, where the compositor offers it
// (KWin's `_KDE_NET_WM_BLUR_BEHIND_REGION`, announced on the root window while its blur is on).
// The region follows the drawn shape; nothing of the screen is ever read by the program.
// GUI thread.
class X11BlurBehind {
public:
    // Whether a compositor that blurs behind windows is running; asked again at most every 2 s,
    // since a moving shape asks on every frame.
    bool available();
    // Sets the blurred region of `window`, in its own pixels; empty removes the blur. A region
    // equal to the one set last is not sent again.
    void apply(unsigned long window, const QVector<QRect>& region);

private:
    QVector<QRect> m_applied;
    bool m_everApplied = false;
    bool m_available = false;
    QElapsedTimer m_askedAt;
};

} // namespace MirlPlayer
