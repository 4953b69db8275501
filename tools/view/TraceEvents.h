// The events of a trace, whose times are counted from what is known at the end only.

#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

#include "NewFile.h"

namespace view {

// Keeps the events in a temporary file, so that memory does not grow with them.
//
// What fails is thrown as std::runtime_error with a text for the user.
class TraceEvents {
  public:
    // What an event's time is counted from: the first time of all on the same clock.
    enum class Clock { kNone, kSession, kNodes };

    TraceEvents();

    // `fields` are those of the JSON object behind the time, without braces.
    void add(Clock clock, int64_t at, std::string_view fields);
    // Writes them in the order they came in, with commas between them.
    void writeTo(NewFile& file);

    // The first time of all; the largest number if there is none.
    int64_t firstOf(Clock clock) const { return clock == Clock::kNodes ? mFirstOfNodes : mFirst; }

  private:
    OwnedFile mFile;
    int64_t mFirst = std::numeric_limits<int64_t>::max();
    int64_t mFirstOfNodes = std::numeric_limits<int64_t>::max();
};

}  // namespace view
