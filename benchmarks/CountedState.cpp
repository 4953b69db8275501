// Replaces operator new in the benchmarks, and in the libraries that they load, by one that
// counts.

#include "CountedState.h"

#include <cstdlib>
#include <new>

namespace {

thread_local Allocations counted{};

}  // namespace

void* operator new(size_t size) {
    ++counted.count;
    counted.bytes += size;
    void* memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t /*size*/) noexcept {
    std::free(memory);
}

Allocations allocations() {
    return counted;
}
