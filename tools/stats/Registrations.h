// The time between one registration and the next.

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "Figures.h"
#include "Row.h"

namespace stats {

// Captures come in any order. What is kept of them are the ones whose neighbours have not come yet.
class Registrations {
  public:
    static constexpr size_t kMost = 4096;  // that are kept; the gaps at others are not counted

    // Counts the gap before the capture, and after it, once both its ends are known, in the figures
    // of the later one: `all` and, unless it is null, `group`. Both must stay where they are. The
    // gap between two processes or two runs is none.
    void add(const rows::CaptureRow& row, Figures& all, Figures* group);

  private:
    struct End {
        int64_t at;
        std::string process;
        Figures* group;
        int neighbours;  // that have come
    };

    void count(std::map<int64_t, End>::iterator earlier, std::map<int64_t, End>::iterator later,
               Figures& all);

    std::string mRunId;
    std::map<int64_t, End> mEnds;  // by the capture's number
};

}  // namespace stats
