// A program that is run beside this one.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace diff {

// Lives while a StopSignals does.
class ChildProcess {
  public:
    // Starts the program with nothing on its standard input; both its outputs go to the file
    // `output`. Throws std::runtime_error with a text for the user.
    ChildProcess(const std::vector<std::string>& command, const std::string& output);
    // Ends it, if it has not been waited for.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Returns its status, soon if this program is asked to end; a signal that ended it as 128 and
    // its number, as a shell does.
    int wait();

  private:
    int end();

    pid_t mPid = -1;
};

}  // namespace diff
