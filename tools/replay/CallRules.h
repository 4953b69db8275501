// Tells from a call's arguments what has no effect.

#pragma once

#include <optional>
#include <string>

#include "CallKind.h"
#include "CaptureLog.h"
#include "Finding.h"

namespace replay {

// A finding about a call as such.
view::Finding callFinding(const CaptureStep& step, view::FindingKind kind, const std::string& text);

// Why the call has no effect whatever the library holds, if so.
std::optional<view::Finding> uselessCall(const CaptureStep& step, CallKind kind);

// The names in the call's map of stages that are no stage's, if there are any. The call has had an
// effect all the same if the finding's kind says so.
std::optional<view::Finding> unknownStages(const CaptureStep& step, CallKind kind);

}  // namespace replay
