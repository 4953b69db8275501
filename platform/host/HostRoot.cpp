// Stands in front of the C library's stat and dlopen, and looks the phone's partitions up
// under the host root.

#include "HostRoot.h"

#include <dlfcn.h>
#include <sys/stat.h>

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

}  // extern "C"
