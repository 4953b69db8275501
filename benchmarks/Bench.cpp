// The benchmarks. They are written against the public manager: which library they measure, the
// real one or another that does its job, is the dynamic loader's choice.

#include "Bench.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "Workload.h"

namespace {

void repeat(benchmark::State& state, const Calls& calls) {
    state.counters["calls"] = static_cast<double>(calls.size());
    const CountedState counted(state);
    for (auto _ : state) {
        makeCalls(calls);
    }
}

void lifecycle(benchmark::State& state, const Lifecycle& lifecycle) {
    const OthersInFlight others(lifecycle, state.range(0));
    makeCalls(lifecycle.calls);  // what is built once is built now
    repeat(state, lifecycle.calls);
}

// Each thread has a snapshot of its own.
void lifecyclePerThread(benchmark::State& state) {
    repeat(state, readCalls("lifecycle.jsonl", std::to_string(state.thread_index())));
}

// Repeats calls on a snapshot that all of the lifecycle's calls but the flush and the
// unregistration were made for.
void repeatOnFilled(benchmark::State& state, const Calls& calls, int64_t othersInFlight) {
    const OthersInFlight others(shortNames(), othersInFlight);
    const Calls& lifecycle = shortNames().calls;
    makeCalls(Calls(lifecycle.begin(), lifecycle.end() - 2));
    repeat(state, calls);
    makeCalls({lifecycle.back()});
}

// The operations of the lifecycle that find their record by its key.
void keyLookUps(benchmark::State& state) {
    repeatOnFilled(state, readCalls("key-look-ups.jsonl"), state.range(0));
}

void command(benchmark::State& state) {
    if (!askWhetherEnabled()) {
        state.SkipWithError("the answer is wrong");
    }
    const CountedState counted(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(askWhetherEnabled());
    }
}

// Each file is one benchmark.
void registerOperations() {
    using std::filesystem::directory_iterator;
    for (const auto& entry : directory_iterator(INFOSYNC_BENCH_DATA "/operations")) {
        const std::filesystem::path& file = entry.path();
        benchmark::RegisterBenchmark(
                ("operation/" + file.stem().string()).c_str(),
                [calls = readCalls("operations/" + file.filename().string())](auto& state) {
                    repeatOnFilled(state, calls, kOthersInFlight);
                });
    }
    benchmark::RegisterBenchmark("operation/command", command);
}

void registerLifecycles() {
    using benchmark::RegisterBenchmark;
    const auto shortLife = [](auto& state) { lifecycle(state, shortNames()); };
    const auto longLife = [](auto& state) { lifecycle(state, longNames()); };
    RegisterBenchmark("lifecycle/short_names", shortLife)->Arg(kOthersInFlight);
    RegisterBenchmark("lifecycle/long_names", longLife)->Arg(kOthersInFlight);
    RegisterBenchmark("in_flight/lifecycle", shortLife)->RangeMultiplier(10)->Range(1, 10000);
    RegisterBenchmark("in_flight/key_look_ups", keyLookUps)->RangeMultiplier(10)->Range(1, 10000);
    RegisterBenchmark("threads/lifecycle", lifecyclePerThread)->ThreadRange(1, 2)->UseRealTime();
}

}  // namespace

int main(int argc, char** argv) {
    prepareLibrary();
    registerLifecycles();
    registerOperations();
    registerPlatform();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
