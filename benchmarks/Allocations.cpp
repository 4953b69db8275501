// Replaces operator new in the benchmarks, and in the libraries that they load, by one that
// counts.

#include "Bench.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

thread_local uint64_t counted = 0;

}  // namespace

void* operator new(size_t size) {
    ++counted;
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

uint64_t allocations() {
    return counted;
}
