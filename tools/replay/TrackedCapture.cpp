#include "TrackedCapture.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "CallKind.h"
#include "Capture.h"
#include "CaptureContent.h"
#include "CaptureLog.h"
#include "Finding.h"
#include "FindingList.h"
#include "ReportedValues.h"
#include "RequestRecord.h"
#include "ToldErrors.h"

namespace replay {
namespace {

using view::FindingKind;

constexpr size_t kMostCalls = 20'000;
constexpr char kNotReturned[] = "not_return";

int32_t idOf(const std::string& name) {
    return static_cast<int32_t>(std::strtol(name.c_str(), nullptr, 10));
}

}  // namespace

Origin originOf(const CaptureStep& step) {
    constexpr auto kLatest = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    return {{0, step.line},
            step.at ? view::Time(static_cast<int64_t>(std::min(*step.at, kLatest))) : view::Time()};
}

view::Call callOf(const CaptureStep& step) {
    const Origin origin = originOf(step);
    return {std::string(step.operation),
            step.thread,
            step.tid.value_or(0),
            origin.at,
            origin.place,
            true};
}

TrackedCapture::TrackedCapture(uint64_t number, std::string name,
                               std::shared_ptr<const Record> record)
    : mRecord(std::move(record)) {
    mCapture.number = number;
    mCapture.name = std::move(name);
}

void TrackedCapture::addCall(const CaptureStep& step, bool hadEffect) {
    view::Call call = callOf(step);
    call.hadEffect = hadEffect;
    keepCall(std::move(call));
}

void TrackedCapture::keepCall(view::Call call) {
    if (mCapture.calls.size() < kMostCalls) {
        mCapture.calls.push_back(std::move(call));
    } else {
        mCallsLeftOut += 1;
    }
}

void TrackedCapture::addFinding(view::Finding finding) {
    const std::string group = finding.subject;
    mFindings.add(std::move(finding), group);
}

void TrackedCapture::noteRegistration(const CaptureStep& step) {
    mRegistered = originOf(step);
    mCapture.isRegistered = true;
    mCapture.registered = mRegistered.at;
    mDeskTimes.created = !step.at;
    addCall(step, true);
}

void TrackedCapture::noteStage(const CaptureStep& step, CallKind kind) {
    // These have a constant, or a missing one that counts as 0.
    const auto hasTime = [](int64_t stage) { return stage != 0 && stage != 7 && stage != 11; };
    const int64_t stage = step.arguments.code.value_or(0);
    // Stage 6 is the time since stage 4.
    const bool isOfDesk =
            stage == 6 && mDeskTimes.stages.count(camInfosync::TimeStageToChar[4]) != 0;
    const bool isKnown = step.at && !mDeskTimes.created && !isOfDesk;
    if (kind == CallKind::kStages) {
        for (const std::string& name : step.arguments.names) {
            mDeskTimes.stages.erase(name);
        }
    } else if (kind == CallKind::kStage && stage == 0) {
        mDeskTimes.requested = !step.at;
    } else if (kind == CallKind::kStage && hasTime(stage)) {
        const auto note = [&](int64_t number) {
            const std::string name = camInfosync::TimeStageToChar[number];
            isKnown ? void(mDeskTimes.stages.erase(name)) : void(mDeskTimes.stages.insert(name));
        };
        note(stage);
        if (stage == 3 || stage == 13) {  // the library stamps both
            note(16 - stage);
        }
    }
}

void TrackedCapture::noteUpdate(const CaptureStep& step, CallKind kind, size_t errorsBefore) {
    noteTold(step, kind, originOf(step));
    for (view::Finding& finding : toldErrors(step, kind, *mRecord, errorsBefore)) {
        addFinding(std::move(finding));
    }
}

// Remembers which call has told what.
void TrackedCapture::noteTold(const CaptureStep& step, CallKind kind, const Origin& origin) {
    switch (kind) {
        case CallKind::kFrame:
            mTold.frame = true;
            mTellers[Teller::kFrame] = origin;
            break;
        case CallKind::kRequestInfo:
            mTold.request = true;
            mExpected = origin;
            break;
        case CallKind::kUserInterface:
            mTold.userInterface = true;
            mTellers[Teller::kUserInterface] = origin;
            break;
        case CallKind::kAutomatics:
            mTold.automatics = true;
            mTellers[Teller::kAutomatics] = origin;
            break;
        case CallKind::kAnchorFrame:
            mTold.anchorFrame = true;
            break;
        case CallKind::kAllResults:
            noteResults(origin);
            break;
        case CallKind::kResult:
            mResults[idOf(step.arguments.names.at(0))] = origin;
            break;
        case CallKind::kAllAlgorithms:
            mTellers[Teller::kAllNodes] = origin;
            mNodes.clear();
            [[fallthrough]];
        case CallKind::kAlgorithmList:
            mTellers[Teller::kNode] = origin;  // of the nodes that have no times yet
            [[fallthrough]];
        case CallKind::kNodeTimes:
            for (const std::string& name : step.arguments.names) {
                mNodes[name] = origin;
            }
            break;
        default:
            break;
    }
}

// All that the record has were told by one call.
void TrackedCapture::noteResults(const Origin& origin) {
    for (const auto& [id, text] : mRecord->snapshotInfo.vendorResultInfo) {
        if (text != kNotReturned) {
            mResults[id] = origin;
        }
    }
}

void TrackedCapture::noteGiven(const CaptureStep& step) {
    const Origin origin = originOf(step);
    mTold = {true, true, true, true, true};
    mDeskTimes = {false, false, {}};
    mExpected = origin;
    mTellers[Teller::kNode] = origin;
    noteResults(origin);
    for (const auto& [node, time] : mRecord->snapshotInfo.zuAlgoInfo.algoTimeA) {
        mNodes[node] = origin;
    }
    for (view::Finding& finding : givenErrors(step, *mRecord)) {
        addFinding(std::move(finding));
    }
}

void TrackedCapture::noteReport(ReportedRecord reported, bool isFlush) {
    noteFlushed(reported.call);
    mCapture.reports.push_back(std::move(reported.report));
    if (isFlush) {
        mReported = std::move(reported.values);
    }
    keepCall(std::move(reported.call));
}

void TrackedCapture::noteFlushWithoutReport(const CaptureStep& step, bool hadEffect) {
    addCall(step, hadEffect);
    noteFlushed(callOf(step));
}

void TrackedCapture::noteFlushed(const view::Call& call) {
    if (!mCapture.isFlushed) {
        mCapture.isFlushed = true;
        mCapture.flushed = call.at;
    }
}

void TrackedCapture::noteRemoval(const CaptureStep& step) {
    mCapture.isRemoved = true;
    mCapture.removed = originOf(step).at;
    addCall(step, true);
}

view::Capture TrackedCapture::complete(bool isOver) {
    mCapture.cameras = mRecord->frameInfo.camIds;
    mCapture.algorithms = mRecord->snapshotInfo.zuAlgoInfo.algoList;
    mCapture.stages = stagesOf(*mRecord, mDeskTimes);
    mCapture.results = resultsOf(*mRecord, mResults);
    mCapture.values = valuesOf(*mRecord, mTold);
    mCapture.nodes = nodesOf(*mRecord, mNodes);
    std::stable_sort(mCapture.calls.begin(), mCapture.calls.end(),
                     [](const view::Call& left, const view::Call& right) {
                         return left.place.line < right.place.line;
                     });
    if (isOver) {
        findMissingResults();
        findMissingCompletions();
        findLateCalls();
        findMissingSteps();
    }
    mCapture.findings = mFindings.take();
    return std::move(mCapture);
}

void TrackedCapture::findMissingResults() {
    const auto& expected = mRecord->snapshotInfo.requestInfo.expectedResultIds;
    for (const view::VendorResult& result : resultsOf(*mRecord, mResults)) {
        const bool isExpected =
                std::find(expected.begin(), expected.end(), result.id) != expected.end();
        if (isExpected && result.text == kNotReturned && result.place.line == 0) {
            const std::string id = std::to_string(result.id);
            addFinding({FindingKind::kResultMissing, "vendor result " + id + " never came", id,
                        mExpected.place, mExpected.at});
        }
    }
}

void TrackedCapture::findMissingCompletions() {
    for (const view::Node& node : mCapture.nodes) {
        if (node.hasRun() && !node.completion && !node.isTimedOut()) {
            const Origin& origin = tellerOf(Teller::kNode, node.name);
            addFinding({FindingKind::kNoCompletion,
                        "node " + shortened(node.name) + " started and never completed", node.name,
                        origin.place, origin.at});
        }
    }
}

// One finding for each call that told what the last flush reported otherwise.
void TrackedCapture::findLateCalls() {
    constexpr size_t kMostValues = 4;  // in one text
    struct Late {
        Origin origin;
        std::string text;
        size_t values = 0;
    };
    std::map<uint64_t, Late> lateCalls;  // by line
    if (mReported) {
        for (const LateValue& value : lateValues(*mReported, reportedValues(*mRecord))) {
            const Origin& origin = tellerOf(value.teller, value.node);
            Late& late = lateCalls[origin.place.line];
            late.origin = origin;
            if (++late.values <= kMostValues) {
                late.text += (late.values == 1 ? "" : "; ") + value.text;
            }
        }
    }
    for (auto& [line, late] : lateCalls) {
        if (late.values > kMostValues) {
            late.text += "; and " + std::to_string(late.values - kMostValues) + " more values";
        }
        const std::string operation = markAsUseless(line);
        const std::string call = operation.empty() ? "" : operation + ": ";
        addFinding({FindingKind::kLate, call + "too late for the report: " + late.text, operation,
                    late.origin.place, late.origin.at});
    }
}

// Returns the operation of the call of that line, or nothing if the call is not kept.
std::string TrackedCapture::markAsUseless(uint64_t line) {
    std::string operation;
    for (view::Call& call : mCapture.calls) {
        if (call.place.line == line) {
            call.hadEffect = false;
            operation = call.operation;
        }
    }
    return operation;
}

void TrackedCapture::findMissingSteps() {
    if (mCapture.isRegistered && !mCapture.isFlushed) {
        addFinding({FindingKind::kNeverFlushed,
                    "registered and never flushed",
                    {},
                    mRegistered.place,
                    mRegistered.at});
    }
    if (mCapture.isRegistered && !mCapture.isRemoved) {
        addFinding({FindingKind::kNeverRemoved,
                    "registered and never unregistered",
                    {},
                    mRegistered.place,
                    mRegistered.at});
    }
}

const Origin& TrackedCapture::tellerOf(Teller teller, const std::string& node) const {
    static const Origin unknown;
    if (const auto told = mNodes.find(node); teller == Teller::kNode && told != mNodes.end()) {
        return told->second;
    }
    const auto told = mTellers.find(teller);
    return told != mTellers.end() ? told->second : unknown;
}

}  // namespace replay
