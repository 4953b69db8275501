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
    static off_t begin = 0;
    const off_t end = lseek(file, 0, SEEK_END);
    std::string text(static_cast<size_t>(end - begin), '\0');
    FUZZ_CHECK(pread(file, text.data(), text.size(), begin) == end - begin);
    // Gives the room back where that can be done. The file keeps its length: the recorder ends if
    // it finds that it is not where it was.
    fallocate(file, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, begin, end - begin);
    begin = end;
    return text;
}

}  // namespace fuzz
