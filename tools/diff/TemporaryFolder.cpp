#include "TemporaryFolder.h"

#include <stdlib.h>  // mkdtemp

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace diff {

TemporaryFolder::TemporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    mPath = std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") +
            "/infosync-diff-XXXXXX";
    if (mkdtemp(mPath.data()) == nullptr) {
        const std::string what = mPath + ": cannot be made: " + std::strerror(errno);
        mPath.clear();
        throw std::runtime_error(what);
    }
}

void TemporaryFolder::remove() {
    std::error_code ignored;
    if (!mPath.empty()) {
        std::filesystem::remove_all(mPath, ignored);
        mPath.clear();
    }
}

}  // namespace diff
