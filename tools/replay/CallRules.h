// Tells from a call's arguments what has no effect.

#pragma once

#include <optional>
#include <vector>

#include "CallKind.h"
#include "CaptureLog.h"
#include "Finding.h"

namespace replay {

// Why the call has no effect whatever the library holds, if so.
std::optional<view::Finding> uselessCall(const CaptureStep& step, CallKind kind);

// Each name in the call's map of stages that is no stage's.
std::vector<view::Finding> unknownStages(const CaptureStep& step, CallKind kind);

}  // namespace replay
