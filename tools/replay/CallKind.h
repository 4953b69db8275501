// Tells the library's operations apart by what they do to a record.

#pragma once

#include "CaptureLog.h"

namespace replay {

enum class CallKind {
    kRegister,
    kUnregister,
    kFlush,
    kRequest,
    kFrame,
    kRequestInfo,
    kUserInterface,
    kAutomatics,
    kAnchorFrame,
    kResult,
    kAllResults,
    kAlgorithmList,
    kAllAlgorithms,
    kErrorText,
    kPostProcessing,  // belongs to no record
    kStage,
    kStages,
    kNodeTimes,
    kNodeState,
    kNodeStates,
};

CallKind kindOf(const CaptureStep& step);

// Whether the service is asked first, and makes no report of it then.
inline bool asksOnly(CallKind kind) {
    return kind == CallKind::kRegister || kind == CallKind::kUnregister;
}
inline bool isUpdate(CallKind kind) {
    return kind > CallKind::kRequest;
}
// Whether the record is found by its frame's name.
bool goesByFrame(CallKind kind);

}  // namespace replay
