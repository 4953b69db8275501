// What the sources of the benchmarks share.

#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

#include "Workload.h"

// How often the calling thread has called operator new.
uint64_t allocations();
// How many bytes the process has written to files.
uint64_t bytesWritten();

// Counts the calling thread's allocations, the service's calls, and what is written, from
// construction to destruction, and gives them to the state per iteration.
class CountedState {
  public:
    explicit CountedState(benchmark::State& state) : mState(state) {}
    ~CountedState() {
        const uint64_t allocationsAfter = allocations();
        put("written", bytesWritten() - mBytesBefore);
        put("allocs", allocationsAfter - mAllocationsBefore);
        put("service_calls", service().calls - mServiceCallsBefore);
    }
    CountedState(const CountedState&) = delete;
    CountedState& operator=(const CountedState&) = delete;

  private:
    void put(const char* name, uint64_t count) {
        using benchmark::Counter;
        mState.counters[name] = Counter(static_cast<double>(count), Counter::kAvgIterations);
    }

    benchmark::State& mState;
    const uint64_t mBytesBefore = bytesWritten();
    const uint64_t mServiceCallsBefore = service().calls;
    const uint64_t mAllocationsBefore = allocations();
};

// Registers what does not belong to a snapshot: a log statement, and writing to a file.
void registerPlatform();
