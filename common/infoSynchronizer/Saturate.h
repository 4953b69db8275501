// Conversions from floating point to integers with the same result on every machine.

#pragma once

#include <limits>
#include <type_traits>

namespace camInfosync {

// Truncates `value` toward zero. Values past an end give that end, and NaN gives 0, as the
// phone's processor does it; the language leaves both undefined.
template <typename Integer>
constexpr Integer truncateSaturated(double value) {
    static_assert(std::is_signed_v<Integer> && std::is_integral_v<Integer>);
    using Limits = std::numeric_limits<Integer>;
    // The lower end is a power of two and therefore exact as a double; the upper end may not be.
    constexpr auto kLowest = static_cast<double>(Limits::min());
    if (value != value) {
        return 0;
    }
    if (value <= kLowest) {
        return Limits::min();
    }
    if (value >= -kLowest) {
        return Limits::max();
    }
    return static_cast<Integer>(value);
}

}  // namespace camInfosync
