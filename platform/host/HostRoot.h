// Where a desk keeps what a phone has under its root.

#pragma once

#include <dlfcn.h>

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
