// Replaces operator new in a benchmark program, and in the libraries that it loads, by one that
// counts.

#include "Allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local Allocations counted{};

}  // namespace

Allocations allocations() {
    return counted;
}

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
