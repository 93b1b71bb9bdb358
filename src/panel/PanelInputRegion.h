#pragma once

#include <QRect>

class QWindow;

namespace MirlPlayer {

// Limits where a window takes pointer input, without clipping what it draws: elsewhere, clicks
// fall through to the windows beneath. On X11 this is the XShape input region; elsewhere it does
// nothing. Returns false when it could not be set.
bool setInputRegion(QWindow& window, const QRect& region);

} // namespace MirlPlayer
