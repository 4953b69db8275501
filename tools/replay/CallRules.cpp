#include "CallRules.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CallKind.h"
#include "CaptureContent.h"
#include "CaptureLog.h"
#include "Finding.h"
#include "FindingList.h"
#include "InfoSyncType.h"
#include "RequestRecord.h"
#include "Spelling.h"
#include "TrackedCapture.h"

namespace replay {
namespace {

using view::FindingKind;

// The code must be one of the first `count`.
std::optional<view::Finding> checkCode(const CaptureStep& step, FindingKind kind, const char* what,
                                       size_t count) {
    const int64_t code = step.arguments.code.value_or(0);
    if (code >= 0 && static_cast<uint64_t>(code) < count) {
        return std::nullopt;
    }
    return callFinding(step, kind,
                       std::string(what) + ' ' + std::to_string(code) +
                               " is none; they go from 0 to " + std::to_string(count - 1));
}

std::optional<view::Finding> checkType(const CaptureStep& step, bool isKnown, const char* known) {
    if (isKnown) {
        return std::nullopt;
    }
    return callFinding(step, FindingKind::kNoReportType,
                       "type " + std::to_string(step.arguments.code.value_or(0)) + known);
}

std::string whatIsNull(const CaptureStep& step) {
    if (step.operation != "request") {
        return "the text";
    }
    return step.arguments.code == camInfosync::INFO_SYNC_TYPE_CMD
                   ? "the key or the place for the result"
                   : "the record";
}

}  // namespace

view::Finding callFinding(const CaptureStep& step, FindingKind kind, const std::string& text) {
    const std::string operation(step.operation);
    const Origin origin = originOf(step);
    return {kind, operation + ": " + text, operation, origin.place, origin.at};
}

std::optional<view::Finding> uselessCall(const CaptureStep& step, CallKind kind) {
    if (step.onOtherManager && isUpdate(kind) && kind != CallKind::kPostProcessing) {
        return callFinding(step, FindingKind::kOtherManager,
                           "made on the manager of GetInstance(), which has no captures");
    }
    if (step.arguments.isNull) {
        return callFinding(step, FindingKind::kNothingGiven,
                           "null is given for " + whatIsNull(step));
    }
    const int64_t type = step.arguments.code.value_or(0);
    switch (kind) {
        case CallKind::kFlush:
            return checkType(step, type == camInfosync::INFO_SYNC_TYPE_COLLECT,
                             " reports nothing; 0 does");
        case CallKind::kRequest:
            return checkType(step, type >= 0 && type < camInfosync::INFO_SYNC_TYPE_MAX,
                             " does nothing; 0, 1 and 2 do");
        case CallKind::kResult:
            return checkCode(step, FindingKind::kCodeOutOfRange, "error code",
                             std::size(camInfosync::ResultErrorCodeToChar));
        case CallKind::kNodeState:
            return checkCode(step, FindingKind::kStateOutOfRange, "state",
                             std::size(camInfosync::NodeProcInfoToChar));
        case CallKind::kStage:
            return checkCode(step, FindingKind::kStageOutOfRange, "stage",
                             std::size(camInfosync::TimeStageToChar));
        default:
            return std::nullopt;
    }
}

std::optional<view::Finding> unknownStages(const CaptureStep& step, CallKind kind) {
    constexpr size_t kMostNames = 4;  // in one text
    const std::vector<std::string_view> stages(std::begin(camInfosync::TimeStageToChar),
                                               std::end(camInfosync::TimeStageToChar));
    const std::vector<std::string>& names = step.arguments.names;
    size_t unknown = 0;
    std::string text;
    for (const std::string& name : names) {
        if (kind == CallKind::kStages &&
            std::find(stages.begin(), stages.end(), name) == stages.end() &&
            ++unknown <= kMostNames) {
            text += (unknown == 1 ? "" : "; ") + shortened(name) + " is no stage's name" +
                    didYouMean(name, stages);
        }
    }
    if (unknown == 0) {
        return std::nullopt;
    }
    if (unknown > kMostNames) {
        text += "; and " + std::to_string(unknown - kMostNames) + " more";
    }
    return callFinding(
            step,
            unknown == names.size() ? FindingKind::kUnknownStageName : FindingKind::kStageLeftOut,
            text);
}

}  // namespace replay
