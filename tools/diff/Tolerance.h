// How far two durations may lie apart and still be the same.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace diff {

struct Tolerance {
    double percent = 0;  // of side A's
    double us = 0;       // microseconds

    // Whether `b` is no further from `a` than the larger of both allows. Both are microseconds.
    bool allows(int64_t a, int64_t b) const;
};

// Of texts such as "10%", "5ms", "250us" and "1.5s"; of several of one kind the last counts. What
// is not given is 0. Throws std::runtime_error with a text for the user.
Tolerance toleranceOf(const std::vector<std::string>& texts);

}  // namespace diff
