// What asks the program to end while there are things to put away.

#pragma once

#include <signal.h>

namespace diff {

// From its construction on, SIGHUP, SIGINT and SIGTERM end the program only once they are waited
// for or it is destroyed. One at a time.
class StopSignals {
  public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    // Waits until a child process may have ended or one of them has come.
    static void wait();
    // The one that was waited for; 0: none.
    static int received();

  private:
    sigset_t mBefore{};
};

}  // namespace diff
