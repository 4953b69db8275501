#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

#include "Workload.h"

// What the calling thread asked operator new for since it was started.
struct Allocations {
    uint64_t count;
    uint64_t bytes;
};
Allocations allocations();

// Counts the calling thread's allocations, and the service's calls, from construction to
// destruction, and gives them to the state per iteration.
class CountedState {
  public:
    explicit CountedState(benchmark::State& state) : mState(state) {}
    ~CountedState() {
        const Allocations after = allocations();
        const uint64_t serviceCalls = service().calls;
        put("allocs", after.count - mBefore.count);
        put("heap_bytes", after.bytes - mBefore.bytes);
        put("service_calls", serviceCalls - mServiceCallsBefore);
    }
    CountedState(const CountedState&) = delete;
    CountedState& operator=(const CountedState&) = delete;

  private:
    void put(const char* name, uint64_t count) {
        using benchmark::Counter;
        mState.counters[name] = Counter(static_cast<double>(count), Counter::kAvgIterations);
    }

    benchmark::State& mState;
    const uint64_t mServiceCallsBefore = service().calls;
    const Allocations mBefore = allocations();
};
