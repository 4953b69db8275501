#pragma once

#include <benchmark/benchmark.h>

#include "Allocations.h"

// Counts the calling thread's allocations from construction to destruction, and gives them to
// the state per iteration.
class CountedState {
  public:
    explicit CountedState(benchmark::State& state) : mState(state), mBefore(allocations()) {}
    ~CountedState() {
        using benchmark::Counter;
        const Allocations after = allocations();
        mState.counters["allocs"] =
                Counter(static_cast<double>(after.count - mBefore.count), Counter::kAvgIterations);
        mState.counters["heap_bytes"] =
                Counter(static_cast<double>(after.bytes - mBefore.bytes), Counter::kAvgIterations);
    }
    CountedState(const CountedState&) = delete;
    CountedState& operator=(const CountedState&) = delete;

  private:
    benchmark::State& mState;
    const Allocations mBefore;
};
