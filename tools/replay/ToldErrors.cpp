#include "ToldErrors.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CallKind.h"
#include "CaptureLog.h"
#include "Finding.h"
#include "FindingList.h"
#include "RequestRecord.h"
#include "TrackedCapture.h"

namespace replay {
namespace {

using camInfosync::RequestRecord;
using view::FindingKind;

constexpr double kTimedOut = -1.0;

// Whether it is one of the library's texts for an error, the first of which means that all is well.
template <size_t Count>
bool isErrorText(const char* const (&texts)[Count], const std::string& text) {
    return std::find(std::next(std::begin(texts)), std::end(texts), text) != std::end(texts);
}

// Collects the errors that one call tells of.
class ErrorFindings {
  public:
    ErrorFindings(const CaptureStep& step, std::vector<view::Finding>& findings)
        : mOrigin(originOf(step)), mFindings(findings) {}

    void add(FindingKind kind, const std::string& subject, std::string text) {
        mFindings.push_back({kind, std::move(text), subject, mOrigin.place, mOrigin.at});
    }
    void addResult(const std::string& id, const std::string& text) {
        add(FindingKind::kVendorError, id, "vendor result " + id + ": " + shortened(text));
    }
    void addState(const std::string& node, const std::string& state) {
        add(FindingKind::kNodeError, node, "node " + shortened(node) + ": " + shortened(state));
    }
    void addTimeOut(const std::string& node) {
        add(FindingKind::kNodeTimeOut, node, "node " + shortened(node) + " timed out");
    }

  private:
    const Origin mOrigin;
    std::vector<view::Finding>& mFindings;
};

// Of calls with a code, which the library counts as errors.
void addCounted(const CaptureStep& step, CallKind kind, const RequestRecord& record,
                ErrorFindings& errors) {
    const std::vector<std::string>& names = step.arguments.names;
    const auto code = static_cast<size_t>(step.arguments.code.value_or(0));  // it is in range
    switch (kind) {
        case CallKind::kResult:
            errors.addResult(names.at(0), camInfosync::ResultErrorCodeToChar[code]);
            break;
        case CallKind::kNodeState:
            errors.addState(names.at(0), camInfosync::NodeProcInfoToChar[code]);
            break;
        case CallKind::kNodeTimes:
            errors.addTimeOut(names.at(0));
            break;
        default:
            errors.add(FindingKind::kErrorText, {}, shortened(record.errorInfo.back()));
            break;
    }
}

void addStates(const std::vector<std::string>& nodes, const RequestRecord& record,
               ErrorFindings& errors) {
    const auto& states = record.snapshotInfo.zuAlgoInfo.algoState;
    for (const std::string& node : nodes) {
        const auto state = states.find(node);
        if (state != states.end() && isErrorText(camInfosync::NodeProcInfoToChar, state->second)) {
            errors.addState(node, state->second);
        }
    }
}

void addAllResults(const RequestRecord& record, ErrorFindings& errors) {
    for (const auto& [id, text] : record.snapshotInfo.vendorResultInfo) {
        if (isErrorText(camInfosync::ResultErrorCodeToChar, text)) {
            errors.addResult(std::to_string(id), text);
        }
    }
}

void addAllAlgorithms(const RequestRecord& record, ErrorFindings& errors) {
    const auto& algo = record.snapshotInfo.zuAlgoInfo;
    for (const auto& [node, time] : algo.algoTimeB) {
        if (time == kTimedOut) {
            errors.addTimeOut(node);
        }
    }
    for (const auto& [node, state] : algo.algoState) {
        if (isErrorText(camInfosync::NodeProcInfoToChar, state)) {
            errors.addState(node, state);
        }
    }
}

// Whether `text` is the library's own for such an error.
bool standsForOneOf(const std::vector<view::Finding>& errors, std::string_view text) {
    constexpr std::pair<std::string_view, FindingKind> kOwnTexts[] = {
            {"vendor result error", FindingKind::kVendorError},
            {"node process time out", FindingKind::kNodeTimeOut},
            {"node process error", FindingKind::kNodeError}};
    return std::any_of(errors.begin(), errors.end(), [&](const view::Finding& error) {
        return std::find(std::begin(kOwnTexts), std::end(kOwnTexts), std::pair(text, error.kind)) !=
               std::end(kOwnTexts);
    });
}

}  // namespace

std::vector<view::Finding> toldErrors(const CaptureStep& step, CallKind kind,
                                      const RequestRecord& record, size_t errorsBefore) {
    std::vector<view::Finding> findings;
    ErrorFindings errors(step, findings);
    if (record.errorInfo.size() > errorsBefore) {
        addCounted(step, kind, record, errors);
    }
    // What is told in texts is an error all the same.
    if (kind == CallKind::kAllResults) {
        addAllResults(record, errors);
    } else if (kind == CallKind::kAllAlgorithms) {
        addAllAlgorithms(record, errors);
    } else if (kind == CallKind::kNodeStates) {
        addStates(step.arguments.names, record, errors);
    }
    return findings;
}

std::vector<view::Finding> givenErrors(const CaptureStep& step, const RequestRecord& record) {
    std::vector<view::Finding> findings;
    ErrorFindings errors(step, findings);
    addAllResults(record, errors);
    addAllAlgorithms(record, errors);
    const std::vector<view::Finding> told = findings;
    for (const std::string& text : record.errorInfo) {
        if (!standsForOneOf(told, text)) {
            errors.add(FindingKind::kErrorText, {}, shortened(text));
        }
    }
    if (record.hasError && findings.empty()) {
        errors.add(FindingKind::kErrorText, {}, "hasError is set, and no error is told");
    }
    return findings;
}

}  // namespace replay
