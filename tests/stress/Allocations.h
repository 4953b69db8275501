// The program's operator new: counts what is in use, and fails on demand.

#pragma once

namespace allocations {

// How many allocations of this thread succeed before all others fail; negative: none fails.
extern thread_local int left;

// The bytes that all threads together hold, library and program alike.
long inUse();

}  // namespace allocations
