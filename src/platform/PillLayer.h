#pragma once

#include <QImage>
#include <QPoint>
#include <functional>

namespace MirlPlayer {

// A small surface of the panel window's own, laid over its content where the resting pill is,
// that shows a finished picture as it is: while the pill rests, its frames go here and the
// panel's scene holds still beneath.
class PillLayer {
public:
    virtual ~PillLayer() = default;
    // Shows `picture` (premultiplied ARGB) with its top left at `at`, in the window's device
    // pixels. False when it cannot; the layer is then hidden and the scene draws the pill.
    virtual bool show(const QImage& picture, QPoint at) = 0;
    virtual void hide() = 0;
    virtual bool shown() const = 0;
    // The window system lost what the layer showed: show the picture again.
    std::function<void()> onLost;
};

} // namespace MirlPlayer
