// Loading the library and unloading it again, with the stand-in service in place. A program of
// its own, since nothing else may keep the library loaded.

#include <dlfcn.h>

#include <iostream>

#include <benchmark/benchmark.h>

#include "CountedState.h"

namespace {

// Keeps what the library prints while it is being loaded out of the results.
class SilentOutput {
  public:
    SilentOutput() : mBuffer(std::cout.rdbuf(nullptr)) {}
    ~SilentOutput() { std::cout.rdbuf(mBuffer); }  // clears the error state, too
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

  private:
    std::streambuf* mBuffer;
};

void load(benchmark::State& state, const char* path) {
    const SilentOutput silent;
    const CountedState counted(state);
    for (auto _ : state) {
        void* library = dlopen(path, RTLD_NOW);
        if (library == nullptr) {
            state.SkipWithError(dlerror());
            break;
        }
        dlclose(library);
        if (dlopen(path, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
            state.SkipWithError("the library stays loaded");
            break;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("infosync/load",
                                 [](auto& state) { load(state, INFOSYNC_BENCH_LIBRARY); });
    benchmark::RegisterBenchmark("by_hand/load",
                                 [](auto& state) { load(state, INFOSYNC_BENCH_BY_HAND); });
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
