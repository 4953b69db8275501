// A folder for files that nobody needs afterwards.

#pragma once

#include <string>

namespace diff {

class TemporaryFolder {
  public:
    // In TMPDIR, or else /tmp. Throws std::runtime_error with a text for the user.
    TemporaryFolder();
    ~TemporaryFolder() { remove(); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return mPath; }
    // With all that is in it; what has been opened can still be read.
    void remove();

  private:
    std::string mPath;  // empty: it is gone
};

}  // namespace diff
