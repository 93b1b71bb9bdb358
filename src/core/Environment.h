#pragma once

namespace MirlPlayer {

// Developer switches. Each is an environment variable that counts when it exists, whatever its
// value (an empty value counts too).
bool debugEnabled(); // NOTCH_DEBUG, read once
bool expandForced(); // NOTCH_EXPAND

} // namespace MirlPlayer
