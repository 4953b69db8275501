// Reads what the recorder in front of the library writes.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Check.h"

namespace fuzz {

// What the recorder has written since the last time.
inline std::string takeRecording() {
    static const int file = [] {
        const std::filesystem::directory_iterator folder(std::getenv("INFOSYNC_RECORD"));
        return open(folder->path().c_str(), O_RDWR | O_CLOEXEC);
    }();
    FUZZ_CHECK(file >= 0);
    std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    FUZZ_CHECK(pread(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    FUZZ_CHECK(ftruncate(file, 0) == 0);  // the recorder appends
    return text;
}

}  // namespace fuzz
