// The file that the service's calls are written to.

#pragma once

#include <cstdio>
#include <string>

#include "LogFile.h"

namespace replay {

class OutputFile {
  public:
    // Opens and empties the file; "-" is standard output, and an empty path no file. Throws
    // std::runtime_error with a text for the user if that is impossible, or if it is the log.
    OutputFile(const std::string& path, const std::string& logPath);

    // Null if there is no file.
    std::FILE* get() const { return mOpen; }

  private:
    File mOwned;
    std::FILE* mOpen = nullptr;  // mOwned's, or standard output
};

// Whether all that was printed to `file` was written. True for null.
bool isWritten(std::FILE* file);

}  // namespace replay
