// The Android log of the benchmark programs and of the libraries that they load: formats each
// line, as the log does before it sends it, and drops it.

#include <cstdarg>
#include <cstdio>

#include <android/log.h>
#include <benchmark/benchmark.h>

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
