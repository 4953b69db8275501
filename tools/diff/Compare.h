// Two captures, or two sessions, compared.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Captured.h"
#include "Difference.h"
#include "Tolerance.h"

namespace diff {

// What a side cannot know is not compared: a log of another kind than a capture log tells little of
// the record, and a log that was written by hand has no times. Durations are compared where both
// sides have one.
std::vector<Difference> compareCaptures(const Captured& a, const Captured& b,
                                        const Tolerance& tolerance);

// Of the switches that both sides know, and of the findings that belong to no capture.
std::vector<Difference> compareSessions(const Session& a, const Session& b);

}  // namespace diff
