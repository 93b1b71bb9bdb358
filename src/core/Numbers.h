#pragma once

#include <QtGlobal>
#include <cmath>
#include <optional>

namespace MirlPlayer {

// Numbers from outside (JSON answers, players, headers, settings) arrive as doubles of any size,
// and converting one that no integer type can hold is undefined behaviour. Every such conversion
// goes through these.

// The integer a double holds exactly, or none (fractions, NaN, and what lies beyond 2^63).
inline std::optional<qint64> exactInt64(double value) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(value >= -limit && value < limit) || value != std::trunc(value))
        return std::nullopt;
    return qint64(value);
}

// A double rounded towards zero and held within [low, high]; NaN gives `low`.
inline qint64 clampedInt64(double value, qint64 low, qint64 high) {
    if (!(value > double(low)))
        return low;
    if (!(value < double(high)))
        return high;
    return qint64(value);
}

} // namespace MirlPlayer
