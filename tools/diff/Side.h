// What is compared: a capture log, a logcat, a bug report, or a folder of rows.

#pragma once

#include <memory>
#include <string>

#include "Captured.h"
#include "ChildProcess.h"
#include "TemporaryFolder.h"

namespace diff {

// A capture log begins with an object, a comment or a blank; whatever begins otherwise is left to
// infosync-logcat.
bool isCaptureLog(const std::string& path);

class Side {
  public:
    // Starts what makes rows of it, unless it is a folder of them. Throws std::runtime_error with
    // a text for the user.
    explicit Side(const std::string& path);

    // Waits for the rows and opens them; what is temporary is gone then. What the program that
    // makes them has to say goes to standard error. Throws as the constructor.
    std::unique_ptr<CaptureReader> open();

  private:
    std::string program() const;
    void waitForRows();

    const std::string mPath;
    std::unique_ptr<TemporaryFolder> mFolder;  // null: it is a folder of rows
    std::unique_ptr<ChildProcess> mChild;      // goes before the folder
};

}  // namespace diff
