// A check that holds in every build.

#pragma once

#undef NDEBUG
#include <cassert>

#define FUZZ_CHECK(condition) assert(condition)
