#include "LastCalls.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "CaptureLog.h"

namespace replay {
namespace {

// Registration, unregistration and flush ask the service, and work on one manager's records
// whatever manager they are called on.
bool isSwitched(const CaptureStep& call) {
    return call.isFlush || call.operation == "registerSnapshotRequestRecord" ||
           call.operation == "unregisterSnapshotRequestRecord";
}

}  // namespace

void LastCalls::add(const CaptureStep& step, uint64_t line) {
    std::vector<Last>& open = mThreads[step.tid.value_or(0)];
    const Gate gate = step.kind == CaptureStep::Kind::kAnswer ? goOn(open, step, line)
                                                              : begin(open, step, line);
    if (gate != kNone) {
        mLastInside[gate] = line;
    }
}

LastCalls::Gate LastCalls::begin(std::vector<Last>& open, const CaptureStep& step, uint64_t line) {
    while (!open.empty() && !open.back().mayAsk) {
        open.pop_back();
    }
    if (open.size() == kMostOpen) {
        open.erase(open.begin());
    }
    const bool switched = isSwitched(step);
    const bool isRequest = step.operation == "request";
    Last& last = open.emplace_back();
    last.call = {line, step.operation, step.thread, step.tid.value_or(0)};
    last.number = step.number;
    last.isRequest = isRequest;
    last.gate = isRequest || step.unordered        ? kNone
                : step.onOtherManager && !switched ? kOther
                                                   : kMain;
    last.inside = line;
    last.mayAsk = mAsking && (switched || isRequest);
    return last.gate;
}

// What the thread has begun since the call asked has returned. The call's own line may be in an
// earlier file.
LastCalls::Gate LastCalls::goOn(std::vector<Last>& open, const CaptureStep& step, uint64_t line) {
    while (!open.empty() && open.back().number != step.number) {
        open.pop_back();
    }
    if (open.empty()) {
        return kNone;
    }
    Last& last = open.back();
    last.inside = line;
    last.mayAsk = false;
    last.gate = last.isRequest || step.unordered ? kNone : kMain;
    return last.gate;
}

std::vector<LastCalls::Call> LastCalls::unfinished() const {
    std::vector<Call> calls;
    for (const auto& [tid, open] : mThreads) {
        if (open.empty()) {
            continue;
        }
        const Last& last = open.back();
        const bool outside = last.gate == kNone || last.mayAsk;
        if (outside || last.inside == mLastInside[last.gate]) {
            calls.push_back(last.call);
        }
    }
    std::sort(calls.begin(), calls.end(),
              [](const Call& left, const Call& right) { return left.line < right.line; });
    return calls;
}

}  // namespace replay
