// Stands in front of the C library's stat and dlopen, and looks the phone's partitions up
// under the host root; and of clock_gettime and gettid, for a thread that makes a recorded call.

#include "HostRoot.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

bool startsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

std::string hostPath(const char* path) {
    std::string phonePath = path;
    if (!startsWith(phonePath, "/vendor/") && !startsWith(phonePath, "/odm/")) {
        return phonePath;
    }
    if (std::getenv("INFOSYNC_HOST_NO_SERVICE") != nullptr) {
        return "/absent" + phonePath;
    }
    return hostRoot() + phonePath;
}

// What the calling thread is told instead of the truth. Needs no memory at its first use, which
// may come from within the allocator.
__attribute__((tls_model("initial-exec"))) thread_local const RecordedMoment* recorded = nullptr;

// The definition that would be used if this library were not there.
template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int stat(const char* path, struct stat* status) {
    static auto* const real = next<int(const char*, struct stat*)>("stat");
    return real(hostPath(path).c_str(), status);
}

void* dlopen(const char* path, int flags) {
    static auto* const real = next<void*(const char*, int)>("dlopen");
    return path != nullptr ? real(hostPath(path).c_str(), flags) : real(path, flags);
}

void infosyncPretend(const RecordedMoment* moment) {
    recorded = moment;
}

int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    constexpr uint64_t kNanoseconds = 1'000'000'000;
    if (recorded != nullptr && clock == CLOCK_MONOTONIC) {
        time->tv_sec = static_cast<time_t>(recorded->monotonic / kNanoseconds);
        time->tv_nsec = static_cast<long>(recorded->monotonic % kNanoseconds);
        return 0;
    }
    static auto* const real = next<int(clockid_t, struct timespec*)>("clock_gettime");
    return real(clock, time);
}

pid_t gettid() noexcept {
    if (recorded != nullptr && recorded->tid != 0) {
        return recorded->tid;
    }
    static auto* const real = next<pid_t()>("gettid");
    return real();
}

}  // extern "C"
