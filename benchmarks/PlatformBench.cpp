#include "PlatformBench.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "CountedState.h"
#include "Log.h"
#include "ThreadPool.h"

// The Android log of the program and of the library that it loads: formats each line, as the log
// does before it sends it, and drops it.
extern "C" __attribute__((visibility("default"))) int __android_log_print(int /*priority*/,
                                                                          const char* /*tag*/,
                                                                          const char* format, ...) {
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    benchmark::DoNotOptimize(&line[0]);
    return length;
}

namespace {

constexpr char kLogTag[] = "benchmark";

uint64_t argumentsEvaluated = 0;

const char* countedArgument() {
    ++argumentsEvaluated;
    return "IMG_2000000";
}

void emptyLoop(benchmark::State& state) {
    const CountedState counted(state);
    for (auto _ : state) {
        benchmark::ClobberMemory();
    }
}

// Fails unless the argument is evaluated once for each line that the gate lets through.
void logLine(benchmark::State& state, bool open) {
    zudebug::gZuCamLogGroup = open ? camInfosync::logging::kGroup : 0;
    zudebug::gZuCamLogLevel = ANDROID_LOG_INFO;
    argumentsEvaluated = 0;
    {
        const CountedState counted(state);
        for (auto _ : state) {
            INFOSYNC_LOGI(INFOSYNC_HERE("logLine"), "flush image %s  queue size: %d",
                          countedArgument(), 5);
            benchmark::ClobberMemory();
        }
    }
    zudebug::gZuCamLogGroup = 0;  // shut, as prepareLibrary has left it
    if (argumentsEvaluated != (open ? static_cast<uint64_t>(state.iterations()) : 0)) {
        state.SkipWithError("the argument was evaluated a wrong number of times");
    }
}

// The caller's part; one worker takes the tasks meanwhile.
void enqueue(benchmark::State& state) {
    std::atomic<int64_t> done{0};
    {
        camInfosync::ThreadPool pool(1, 10);
        const CountedState counted(state);
        for (auto _ : state) {
            pool.enqueue([&done] { done.fetch_add(1, std::memory_order_relaxed); });
        }
    }
    if (done != static_cast<int64_t>(state.iterations())) {
        state.SkipWithError("the pool did not run all tasks");
    }
}

}  // namespace

void registerPlatform() {
    benchmark::RegisterBenchmark("empty_loop", emptyLoop);
    benchmark::RegisterBenchmark("log_line/shut", [](auto& state) { logLine(state, false); });
    benchmark::RegisterBenchmark("log_line/open", [](auto& state) { logLine(state, true); });
    benchmark::RegisterBenchmark("enqueue", enqueue);
}
