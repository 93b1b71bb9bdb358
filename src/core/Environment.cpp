#include "core/Environment.h"

#include <cstdlib>

namespace MirlPlayer {

bool debugEnabled() {
    static const bool enabled = std::getenv("NOTCH_DEBUG") != nullptr;
    return enabled;
}

bool expandForced() {
    return std::getenv("NOTCH_EXPAND") != nullptr;
}

} // namespace MirlPlayer
