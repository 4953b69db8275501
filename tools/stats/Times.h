// What is shown of a number of durations.

#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "Histogram.h"

namespace stats {

struct Percentile {
    uint32_t percent;
    uint64_t least;  // number of values of which it says more than the maximum does
    const char* name;
};

inline constexpr std::array<Percentile, 4> kPercentiles = {
        {{50, 1, "p50"}, {90, 1, "p90"}, {95, 20, "p95"}, {99, 100, "p99"}}};

// The percentile, if there are enough values.
inline std::optional<int64_t> valueAt(const Percentile& percentile, const Histogram& times) {
    return times.count() >= percentile.least
                   ? std::optional<int64_t>(times.percentile(percentile.percent))
                   : std::nullopt;
}

}  // namespace stats
