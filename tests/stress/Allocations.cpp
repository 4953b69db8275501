#include "Allocations.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> bytes{0};

}  // namespace

namespace allocations {

std::atomic<int> leftAtStart{-1};
thread_local int left = leftAtStart;

long inUse() {
    return bytes;
}

}  // namespace allocations

void* operator new(size_t size) {
    void* memory = allocations::left == 0 ? nullptr : malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    allocations::left -= allocations::left > 0 ? 1 : 0;
    bytes += static_cast<long>(malloc_usable_size(memory));
    return memory;
}

// A sanitizer's own would not come here.
void* operator new[](size_t size) {
    return operator new(size);
}

void operator delete(void* memory) noexcept {
    bytes -= static_cast<long>(malloc_usable_size(memory));
    free(memory);
}

void operator delete(void* memory, size_t /*size*/) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory, size_t /*size*/) noexcept {
    operator delete(memory);
}
