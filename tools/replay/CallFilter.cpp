#include "CallFilter.h"

#include "CaptureLog.h"

namespace replay {

CallFilter::Verdict CallFilter::judge(const CaptureStep& call) {
    const bool cut = isCut(call);
    if (call.image && !mWanted.empty() && mWanted.count(*call.image) == 0) {
        return Verdict::kOtherImage;
    }
    return cut                                            ? Verdict::kCut
           : call.kind == CaptureStep::Kind::kOmittedCall ? Verdict::kOmitted
                                                          : Verdict::kPlayed;
}

// What is lost of an image matters until it is unregistered. A request brings its own record.
bool CallFilter::isCut(const CaptureStep& call) {
    if (mCut.empty() || !call.image || call.operation == "request") {
        return false;
    }
    const auto position = mCut.find(*call.image);
    if (position == mCut.end()) {
        return false;
    }
    if (call.operation == "unregisterSnapshotRequestRecord") {
        mCut.erase(position);
    }
    return true;
}

}  // namespace replay
