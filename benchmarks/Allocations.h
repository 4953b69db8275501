#pragma once

#include <cstdint>

// What the calling thread asked operator new for since it was started.
struct Allocations {
    uint64_t count;
    uint64_t bytes;
};
Allocations allocations();
