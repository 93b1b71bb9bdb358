#pragma once

#include "platform/Pointer.h"

namespace MirlPlayer {

// The global pointer and its buttons from one QueryPointer on the root window, over the
// process's one X connection.
class X11Pointer : public Pointer {
public:
    PointerReading read() override;

private:
    PointerReading m_last;
};

} // namespace MirlPlayer
