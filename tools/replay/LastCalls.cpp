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
    Last& last = mThreads[step.tid.value_or(0)];
    if (step.kind == CaptureStep::Kind::kAnswer) {
        if (last.number == step.number) {
            last.inside = line;
            last.mayAsk = false;
            last.gate = step.unordered ? kNone : last.gate;
        }
    } else {
        const bool switched = isSwitched(step);
        last.call = {line, step.operation, step.thread, step.tid.value_or(0)};
        last.number = step.number;
        last.gate = step.operation == "request" || step.unordered ? kNone
                    : step.onOtherManager && !switched            ? kOther
                                                                  : kMain;
        last.inside = line;
        last.mayAsk = mAsking && switched;
    }
    if (last.gate != kNone) {
        mLastInside[last.gate] = last.inside;
    }
}

std::vector<LastCalls::Call> LastCalls::unfinished() const {
    std::vector<Call> calls;
    for (const auto& [tid, last] : mThreads) {
        const bool known = last.call.line != 0;
        const bool outside = last.gate == kNone || last.mayAsk;
        if (known && (outside || last.inside == mLastInside[last.gate])) {
            calls.push_back(last.call);
        }
    }
    std::sort(calls.begin(), calls.end(),
              [](const Call& left, const Call& right) { return left.line < right.line; });
    return calls;
}

}  // namespace replay
