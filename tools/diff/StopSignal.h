// What asks the program to end while there are things to put away.

#pragma once

namespace diff {

// From its construction on, SIGHUP, SIGINT and SIGTERM are noted and interrupt what waits. Its
// destruction makes them end the program again.
class StopSignals {
  public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    // The one that came; 0: none has.
    static int received();
};

}  // namespace diff
