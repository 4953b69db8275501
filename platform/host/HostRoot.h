// Where a desk machine keeps what a phone has under its root.

#pragma once

#include <cstdlib>
#include <string>

// The directory that stands in for the phone's root. Empty means that the paths are real.
inline std::string hostRoot() {
    const char* root = std::getenv("INFOSYNC_HOST_ROOT");
    return root != nullptr ? root : INFOSYNC_HOST_ROOT;
}
