// The program's operator new: counts what is in use, and fails on demand.

#pragma once

#include <atomic>

namespace allocations {

// How many allocations of this thread succeed before all others fail; negative: none fails.
extern thread_local int left;

// The same for threads that are yet to start.
extern std::atomic<int> leftAtStart;

// The bytes that all threads together hold, library and program alike.
long inUse();

}  // namespace allocations
