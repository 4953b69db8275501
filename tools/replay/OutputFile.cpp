#include "OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace replay {

OutputFile::OutputFile(const std::string& path, const std::string& logPath) {
    if (path.empty()) {
        return;
    }
    if (path == "-") {
        mOpen = stdout;
        return;
    }
    std::error_code ignored;
    if (std::filesystem::equivalent(path, logPath, ignored)) {
        throw std::runtime_error(path + ": is the log itself, which would be overwritten");
    }
    mOwned.reset(std::fopen(path.c_str(), "w"));
    if (mOwned == nullptr) {
        throw std::runtime_error(path + ": cannot be opened for writing: " + std::strerror(errno));
    }
    mOpen = mOwned.get();
}

bool isWritten(std::FILE* file) {
    return file == nullptr || (std::fflush(file) == 0 && std::ferror(file) == 0);
}

}  // namespace replay
