#pragma once

#include <QPointF>

namespace MirlPlayer {

// One reading of the global pointer.
struct PointerReading {
    // The position in screen points, origin at the bottom left of the primary screen.
    QPointF location;
    // The pressed mouse buttons: bit 0 is the left button, bit 1 the right one.
    unsigned buttons = 0;
};

// The seam to the global pointer. The panel ignores the mouse while it rests, so hover is seen
// only by polling this; position and buttons come in one reading, as the window server gives them.
class Pointer {
public:
    virtual ~Pointer() = default;
    virtual PointerReading read() = 0;
};

} // namespace MirlPlayer
