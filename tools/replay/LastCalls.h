// Finds the calls that a recording without an end may have ended in.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "CaptureLog.h"

namespace replay {

// A call was over when its thread went on. The recorder lets only one call at a time into each
// manager, so it was over as well when the next one came, unless the service was being asked
// then: that keeps nobody out.
class LastCalls {
  public:
    // `asking`: there is a service, which the calls of three operations ask.
    explicit LastCalls(bool asking) : mAsking(asking) {}

    // To be told each recorded call and answer, and the number of its line.
    void add(const CaptureStep& step, uint64_t line);

    struct Call {
        uint64_t line = 0;
        std::string_view operation;
        std::string thread;
        int32_t tid = 0;
    };
    // Those that may not have returned, in the log's order: one per thread at most.
    std::vector<Call> unfinished() const;

  private:
    enum Gate { kMain, kOther, kNone };  // what lets one call at a time in
    struct Last {
        Call call;
        Gate gate = kNone;
        uint64_t number = 0;
        uint64_t inside = 0;  // the last line at which the call was inside its gate
        bool mayAsk = false;  // and may have been outside after that
    };

    bool mAsking;
    std::map<int32_t, Last> mThreads;  // by their ids
    uint64_t mLastInside[kNone] = {};  // by gate
};

}  // namespace replay
