// Where a desk keeps what a phone has under its root, and what stands in front of the C library.

#pragma once

#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <string>

// The directory that stands in for the phone's root: the environment's INFOSYNC_HOST_ROOT, or
// the one that lies two folders above the stand-ins. Empty means that the paths are real.
inline std::string hostRoot() {
    if (const char* root = std::getenv("INFOSYNC_HOST_ROOT"); root != nullptr) {
        return root;
    }
    // An address in one of the stand-ins. Which one is the linker's choice, and does not matter:
    // they lie in one folder.
    static const char anchor = 0;
    Dl_info library{};
    if (dladdr(&anchor, &library) == 0) {
        return {};
    }
    const std::string path = library.dli_fname;
    return path.substr(0, path.rfind('/') + 1) + "../../host-root";
}

// When and on which thread a call was recorded.
struct RecordedMoment {
    uint64_t monotonic;  // CLOCK_MONOTONIC in nanoseconds
    int32_t tid;         // 0: not recorded
};

// From now on, clock_gettime(CLOCK_MONOTONIC) and gettid tell the calling thread what `moment`
// holds, which is read each time; null: the truth. Programs that link hostroot have it.
extern "C" void infosyncPretend(const RecordedMoment* moment);
