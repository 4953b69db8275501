// Finds the calls that a recording without an end may have ended in.

#pragma once

#include <cstddef>
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
        bool isRequest = false;
        uint64_t inside = 0;  // the last line at which the call was inside its gate
        bool mayAsk = false;  // and may have been outside after that
    };

    // Of one thread: its last call, and before it those that it may lie in, because they may be
    // asking the service. Not all of these, since an answer that is no news has no line.
    static constexpr size_t kMostOpen = 8;

    // Both return what the call is inside of from this line on.
    Gate begin(std::vector<Last>& open, const CaptureStep& step, uint64_t line);
    static Gate goOn(std::vector<Last>& open, const CaptureStep& step, uint64_t line);

    bool mAsking;
    std::map<int32_t, std::vector<Last>> mThreads;  // by their ids
    uint64_t mLastInside[kNone] = {};               // by gate
};

}  // namespace replay
