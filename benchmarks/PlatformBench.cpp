#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <android/log.h>
#include <zudebug/Log.h>

#include "Bench.h"
#include "Log.h"
#include "LogSites.h"

// The Android log of the program and of the library that it loads: formats each line, as the log
// does before it sends it, and drops it.
extern "C" int __android_log_print(int /*priority*/, const char* /*tag*/, const char* format, ...) {
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

// What a recorded call cannot do without: to add a line to a file.
void bareWrite(benchmark::State& state) {
    const char line[1024] = {};
    const char* const path = std::getenv("INFOSYNC_BENCH_FILE");
    const int file = open(path != nullptr ? path : "",
                          O_CREAT | O_TRUNC | O_APPEND | O_WRONLY | O_CLOEXEC, 0600);
    for (auto _ : state) {
        if (write(file, line, static_cast<size_t>(state.range(0))) != state.range(0)) {
            state.SkipWithError("INFOSYNC_BENCH_FILE names no file that can be written");
        }
    }
    close(file);
}

}  // namespace

void registerPlatform() {
    benchmark::RegisterBenchmark("empty_loop", emptyLoop);
    benchmark::RegisterBenchmark("log_line/shut", [](auto& state) { logLine(state, false); });
    benchmark::RegisterBenchmark("log_line/open", [](auto& state) { logLine(state, true); });
    benchmark::RegisterBenchmark("bare_write", bareWrite)->RangeMultiplier(2)->Range(128, 1024);
}
