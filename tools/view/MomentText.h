// Points of time in words.

#pragma once

#include <string>

#include "Finding.h"
#include "View.h"

namespace view {

// A time of the session on the real clock: nanoseconds since 1970, UTC; absent if that is not
// known.
Time realTime(Time at, const Session& session);

// "at 2026-05-02 18:30:07.123 UTC", or if the real time is not known "at 120455.033 s since the
// start". Empty without a time.
std::string momentText(Time at, const Session& session);

// " after 31 ms", or nothing if one of the times is not known.
std::string afterText(Time from, Time to);

}  // namespace view
