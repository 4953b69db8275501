#include "CallKind.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "CaptureLog.h"

namespace replay {
namespace {

// An operation has up to two forms: one with a code and one with all values.
struct Kinds {
    std::string_view operation;
    CallKind withoutCode;
    CallKind withCode;
};

constexpr Kinds kKinds[] = {
        {"registerSnapshotRequestRecord", CallKind::kRegister, CallKind::kRegister},
        {"unregisterSnapshotRequestRecord", CallKind::kUnregister, CallKind::kUnregister},
        {"snapshotRequestInfoFlush", CallKind::kFlush, CallKind::kFlush},
        {"request", CallKind::kRequest, CallKind::kRequest},
        {"updateFrameInfo", CallKind::kFrame, CallKind::kFrame},
        {"updateRequestInfo", CallKind::kRequestInfo, CallKind::kRequestInfo},
        {"updateUIInfo", CallKind::kUserInterface, CallKind::kUserInterface},
        {"updateAnchor3aInfo", CallKind::kAutomatics, CallKind::kAutomatics},
        {"updateAnchorFrame", CallKind::kAnchorFrame, CallKind::kAnchorFrame},
        {"updateVndResultInfo", CallKind::kAllResults, CallKind::kResult},
        {"updateSnapshotErrorInfo", CallKind::kErrorText, CallKind::kErrorText},
        {"updatePostProcInfo", CallKind::kPostProcessing, CallKind::kPostProcessing},
        {"updateSnapshotTimeInfo", CallKind::kStages, CallKind::kStage},
        {"updateNodeProcTime", CallKind::kNodeTimes, CallKind::kNodeTimes},
        {"updateNodeProcState", CallKind::kNodeStates, CallKind::kNodeState},
};

}  // namespace

CallKind kindOf(const CaptureStep& step) {
    if (step.operation == "updateZuAlgoInfo") {
        return step.arguments.isList ? CallKind::kAlgorithmList : CallKind::kAllAlgorithms;
    }
    const auto* kinds = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kinds& each) {
        return each.operation == step.operation;
    });
    return step.arguments.code ? kinds->withCode : kinds->withoutCode;
}

bool goesByFrame(CallKind kind) {
    return kind == CallKind::kAlgorithmList || kind == CallKind::kNodeTimes ||
           kind == CallKind::kNodeState || kind == CallKind::kNodeStates;
}

}  // namespace replay
