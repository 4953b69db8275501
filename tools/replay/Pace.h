// Keeps the gaps between the lines of a recording.

#pragma once

#include <cstdint>
#include <optional>

namespace replay {

class Pace {
  public:
    // Sleeps until as much time has passed since the first call as lies between the two lines'
    // times. Does not sleep for a time before the first one's.
    void keep(uint64_t at);

  private:
    struct Start {
        uint64_t recorded;
        uint64_t now;
    };
    std::optional<Start> mStart;
};

}  // namespace replay
