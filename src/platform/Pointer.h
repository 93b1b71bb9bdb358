#pragma once

#include <QPointF>

namespace MirlPlayer {

// The seam to the global pointer. The panel ignores the mouse while it rests, so hover is seen
// only by polling this.
class Pointer {
public:
    virtual ~Pointer() = default;

    // The pointer position in screen points, origin at the bottom left of the primary screen.
    virtual QPointF location() = 0;
    // The pressed mouse buttons: bit 0 is the left button, bit 1 the right one.
    virtual unsigned pressedButtons() = 0;
};

} // namespace MirlPlayer
