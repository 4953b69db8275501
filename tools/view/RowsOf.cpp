#include "RowsOf.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "MomentText.h"
#include "Row.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {
namespace {

constexpr int64_t kLargest = int64_t{1} << 53;
constexpr uint32_t kShotToShot = 12;  // the stage

rows::Whole safeNumber(int64_t whole) {
    return whole >= -kLargest && whole <= kLargest ? rows::Whole(whole) : std::nullopt;
}

rows::Text known(const std::string& text) {
    return text.empty() ? std::nullopt : rows::Text(text);
}

std::optional<rows::Nanoseconds> inText(Time time) {
    return time ? std::optional(rows::Nanoseconds{*time}) : std::nullopt;
}

rows::Duration ofMilliseconds(std::optional<double> ms) {
    const double us = std::round(ms.value_or(NAN) * 1e3);
    const bool fits = std::abs(us) <= static_cast<double>(kLargest);
    return fits ? rows::Duration(static_cast<int64_t>(us)) : std::nullopt;
}

rows::Duration microsecondsUntil(Time from, Time to) {
    int64_t ns = 0;
    const bool isKnown = from && to && !__builtin_sub_overflow(*to, *from, &ns);
    return isKnown ? safeNumber(ns / 1000) : std::nullopt;
}

// Sets a column from the value that the record holds under that name.
void take(const Capture& capture, const char* name, rows::Text& out) {
    const Value* value = capture.find(name);
    if (value != nullptr) {
        out = value->text;
    }
}

void take(const Capture& capture, const char* name, rows::Number& out) {
    const Value* value = capture.find(name);
    if (value != nullptr && value->isNumber) {
        out = std::strtod(value->text.c_str(), nullptr);
    }
}

template <typename Integer>
bool readWhole(const Capture& capture, const char* name, Integer& out) {
    const Value* value = capture.find(name);
    if (value == nullptr) {
        return false;
    }
    const char* end = value->text.data() + value->text.size();
    const auto [last, error] = std::from_chars(value->text.data(), end, out);
    return error == std::errc() && last == end;
}

void take(const Capture& capture, const char* name, rows::Whole& out) {
    int64_t whole = 0;
    if (readWhole(capture, name, whole)) {
        out = safeNumber(whole);
    }
}

template <typename Integer>
void take(const Capture& capture, const char* name, std::optional<rows::InText<Integer>>& out) {
    Integer whole{};
    if (readWhole(capture, name, whole)) {
        out = rows::InText<Integer>{whole};
    }
}

// "1, 2" as "1,2".
void takeList(const Capture& capture, const char* name, rows::Text& out) {
    take(capture, name, out);
    if (out) {
        out->erase(std::remove(out->begin(), out->end(), ' '), out->end());
    }
}

void takeValues(const Capture& capture, rows::CaptureRow& row) {
    take(capture, "frameNumber", row.frameNumber);
    take(capture, "timestamp", row.timestamp);
    take(capture, "frameExtra", row.frameExtra);
    take(capture, "camIds[0]", row.camId);
    take(capture, "requestType", row.requestType);
    take(capture, "camMode", row.camMode);
    take(capture, "faceDetect", row.faceDetect);
    take(capture, "zoomRatio", row.zoomRatio);
    take(capture, "uiExtra", row.uiExtra);
    take(capture, "reqValueA", row.reqValueA);
    take(capture, "reqValueB", row.reqValueB);
    take(capture, "anchorFrame", row.anchorFrame);
    take(capture, "reqValue64", row.reqValue64);
    takeList(capture, "reqIdsA", row.reqIdsA);
    takeList(capture, "expectedResultIds", row.expectedResultIds);
    take(capture, "fstop", row.fstop);
    take(capture, "iso", row.iso);
    take(capture, "lux", row.lux);
    take(capture, "exposureTime", row.exposureTime);
    if (const Value* flag = capture.find("reqFlag"); flag != nullptr) {
        row.reqFlag = flag->text == "true";
    }
}

template <typename Elements, typename ToText>
rows::Text joined(const std::optional<Elements>& elements, const char* separator, ToText toText) {
    if (!elements) {
        return std::nullopt;
    }
    std::string text;
    for (const auto& element : *elements) {
        text += (text.empty() ? "" : separator) + toText(element);
    }
    return text;
}

void takeLists(const Capture& capture, rows::CaptureRow& row) {
    row.cameras = joined(capture.cameras, ",", [](uint32_t id) { return std::to_string(id); });
    if (capture.cameras && !capture.cameras->empty()) {
        row.camId = capture.cameras->front();
    }
    row.algorithms = joined(capture.algorithms, ",", [](const std::string& text) { return text; });
    row.results = joined(capture.results, ",", [](const VendorResult& result) {
        return std::to_string(result.id) + '=' + result.text;
    });
}

void takeStages(const Capture& capture, rows::CaptureRow& row) {
    row.stagesTold = joined(capture.stages, ",",
                            [](const Stage& stage) { return std::to_string(stage.number); });
    for (const Stage& stage : capture.stages.value_or(std::vector<Stage>())) {
        const bool hasTime = stage.isKnown && (stage.number != 0 || stage.ms != -1);
        int64_t us = 0;
        if (stage.number < rows::kStages && hasTime &&
            !__builtin_mul_overflow(stage.ms, int64_t{1000}, &us)) {
            row.stages[stage.number] = safeNumber(us);
        }
    }
    row.shotToShot = row.stages[kShotToShot];
}

template <typename Counts>
int64_t callsOf(const std::vector<Finding>& findings, Counts counts) {
    int64_t calls = 0;
    for (const Finding& finding : findings) {
        calls += counts(finding.kind) ? static_cast<int64_t>(finding.calls) : 0;
    }
    return calls;
}

int64_t callsOf(const Capture& capture, FindingKind kind) {
    return callsOf(capture.findings, [&](FindingKind each) { return each == kind; });
}

int64_t callsOf(const std::vector<Finding>& findings) {
    return callsOf(findings, [](FindingKind /*kind*/) { return true; });
}

void takeCounts(const Capture& capture, rows::CaptureRow& row) {
    row.findings = callsOf(capture.findings);
    row.calls = static_cast<int64_t>(capture.calls.size());
    row.callsWithoutEffect = callsOf(capture.findings, meansNoEffect);
    row.vendorErrors = callsOf(capture, FindingKind::kVendorError);
    row.nodeTimeOuts = callsOf(capture, FindingKind::kNodeTimeOut);
    row.nodeErrors = callsOf(capture, FindingKind::kNodeError);
    row.errorTexts = callsOf(capture, FindingKind::kErrorText);
    row.resultsMissing = callsOf(capture, FindingKind::kResultMissing);
    row.noCompletions = callsOf(capture, FindingKind::kNoCompletion);
    row.reports = static_cast<int64_t>(capture.reports.size());
}

void takeFindings(const Capture& capture, rows::CaptureRow& row) {
    row.hasFailed = capture.hasFailed();
    for (const Finding& finding : capture.findings) {
        if (meansFailure(finding.kind)) {
            row.firstFinding = row.firstFinding ? row.firstFinding : finding.text;
            row.errors = row.errors ? *row.errors + "; " + finding.text : finding.text;
        }
    }
    if (!row.firstFinding && !capture.findings.empty()) {
        row.firstFinding = capture.findings.front().text;
    }
}

void takeTimes(const Capture& capture, const Session& session, rows::CaptureRow& row) {
    row.registered = inText(realTime(capture.registered, session));
    row.flushed = inText(realTime(capture.flushed, session));
    row.removed = inText(realTime(capture.removed, session));
    row.registeredAt = microsecondsUntil(0, capture.registered);
    row.toFlush = microsecondsUntil(capture.registered, capture.flushed);
    row.isFlushed = capture.isFlushed;
    row.isRemoved = capture.isRemoved;
}

void takePlace(const Capture& capture, const Session& session, rows::CaptureRow& row) {
    Place place;
    if (!capture.calls.empty()) {
        place = capture.calls.front().place;
    } else if (!capture.findings.empty()) {
        place = capture.findings.front().place;
    }
    if (place.source < session.sources.size()) {
        row.source = session.sources[place.source];
    }
    if (place.line != 0) {
        row.line = static_cast<int64_t>(place.line);
    }
}

bool isOfNode(FindingKind kind) {
    return kind == FindingKind::kNodeTimeOut || kind == FindingKind::kNodeError ||
           kind == FindingKind::kNoCompletion;
}

bool hasFailed(const Node& node, const Capture& capture) {
    const auto isItsFailure = [&](const Finding& finding) {
        return isOfNode(finding.kind) && finding.subject == node.name;
    };
    return node.isTimedOut() ||
           std::any_of(capture.findings.begin(), capture.findings.end(), isItsFailure);
}

}  // namespace

rows::CaptureRow captureRowOf(const Capture& capture, const Session& session,
                              const RowOptions& options) {
    rows::CaptureRow row;
    row.runId = options.runId;
    row.captureSeq = static_cast<int64_t>(capture.number);
    row.device = known(options.device);
    row.build = known(options.build);
    row.process = known(capture.process.empty() ? options.process : capture.process);
    row.name = capture.name;
    takePlace(capture, session, row);
    takeTimes(capture, session, row);
    takeCounts(capture, row);
    takeFindings(capture, row);
    takeValues(capture, row);
    takeLists(capture, row);
    takeStages(capture, row);
    row.nodeCount = static_cast<int64_t>(capture.nodes.size());
    if (const Node* slowest = capture.slowestNode(); slowest != nullptr) {
        row.slowestNode = slowest->name;
        row.slowestNodeTook = ofMilliseconds(slowest->duration());
    }
    return row;
}

std::vector<rows::NodeRow> nodeRowsOf(const Capture& capture, const rows::CaptureRow& captureRow) {
    std::vector<rows::NodeRow> all;
    for (const Node& node : capture.nodes) {
        rows::NodeRow& row = all.emplace_back();
        row.runId = captureRow.runId;
        row.captureSeq = captureRow.captureSeq;
        row.device = captureRow.device;
        row.build = captureRow.build;
        row.camMode = captureRow.camMode;
        row.name = captureRow.name;
        row.registered = captureRow.registered;
        row.node = node.name;
        row.isListed = node.isListed;
        if (node.hasRun()) {
            row.start = ofMilliseconds(node.start);
            row.second = node.isTimedOut() ? std::nullopt : ofMilliseconds(node.second);
            row.completion = ofMilliseconds(node.completion);
            row.took = ofMilliseconds(node.duration());
        }
        row.timedOut = node.second ? rows::Flag(node.isTimedOut()) : std::nullopt;
        row.hasFailed = hasFailed(node, capture);
        row.state = known(node.state);
    }
    return all;
}

rows::RunRow runRowOf(const Session& session, const RowOptions& options) {
    rows::RunRow row;
    row.runId = options.runId;
    row.source = joined(std::optional(session.sources), ", ",
                        [](const std::string& source) { return source; });
    row.device = known(options.device);
    row.build = known(options.build);
    row.clock = session.clock == Clock::kReal        ? "real"
                : session.clock == Clock::kMonotonic ? "monotonic"
                                                     : "none";
    row.calls = static_cast<int64_t>(session.calls);
    row.findings = callsOf(session.findings);
    row.switches = session.switches;
    return row;
}

}  // namespace view
