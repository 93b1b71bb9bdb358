#include "library/RowClickTiming.h"

#include <algorithm>

namespace MirlPlayer {

double RowClickTiming::waitFor(double doubleClickInterval) {
    return std::max(0.0, std::min(doubleClickInterval, longestWait));
}

RowClickTiming::Outcome RowClickTiming::click(const QString& id, double now) {
    if (now - lastDoubleClick < tripleClickGuard)
        return Outcome::ignored;
    if (pendingClick == id) {
        lastDoubleClick = now;
        pendingClick.reset();
        return Outcome::doubleClick;
    }
    pendingClick = id;
    return Outcome::waiting;
}

std::optional<QString> RowClickTiming::expire() {
    return std::exchange(pendingClick, std::nullopt);
}

} // namespace MirlPlayer
