#include "core/Clock.h"

#include <QDateTime>
#include <chrono>

namespace MirlPlayer {

namespace {
qint64 steadyNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
} // namespace

SystemClock::SystemClock()
    : m_originNs(steadyNs()) {}

double SystemClock::now() const {
    // Offset so that the first reading is well above Clock::distantPast and above zero.
    return 1000.0 + double(steadyNs() - m_originNs) / 1e9;
}

double SystemClock::wallNow() const {
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

Clock& Clock::system() {
    static SystemClock clock;
    return clock;
}

} // namespace MirlPlayer
