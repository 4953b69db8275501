// How the builder puts reports together: a flush is told by several lines of one thread.

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "Capture.h"
#include "CaptureBuilder.h"
#include "Finding.h"
#include "Message.h"
#include "Process.h"

namespace logcat {
namespace {

using view::FindingKind;

constexpr char kCut[] = "the log has the beginning of the event only";

void addFinding(Telling& telling, const Entry& entry, FindingKind kind, const std::string& text,
                const std::string& node) {
    telling.findings.push_back({kind, node.empty() ? text : "node " + node + ": " + text, node,
                                entry.place, entry.at});
}

void beginReport(Telling& telling, const Entry& entry) {
    telling.hasReport = true;
    telling.report.at = entry.at;
    telling.report.place = entry.place;
}

void addSubmit(Telling& telling, const Entry& entry) {
    beginReport(telling, entry);
    SubmitEvent event = readSubmitEvent(entry.message.text);
    if (event.isCut) {
        addFinding(telling, entry, FindingKind::kCutEvent, kCut, {});
        return;
    }
    telling.isNamed = true;
    telling.pipelineName = std::move(event.pipelineName);
    telling.timestamp = std::move(event.timestamp);
}

void addStart(Telling& telling, const Entry& entry, const NodeEvent& event) {
    view::Node node;
    node.name = event.node;
    node.place = entry.place;
    if (event.hasTime) {
        node.start = static_cast<double>(event.time);
    }
    telling.nodes.push_back(std::move(node));
}

void addCompletion(Telling& telling, const Entry& entry, const NodeEvent& event) {
    if (telling.nodes.empty() || telling.nodes.back().name != event.node ||
        telling.nodes.back().completion) {
        addFinding(telling, entry, FindingKind::kGap, "its start is missing from the log",
                   event.node);
        telling.nodes.emplace_back().name = event.node;
        telling.nodes.back().place = entry.place;
    }
    if (event.hasTime) {
        telling.nodes.back().completion = static_cast<double>(event.time);
    }
}

void addNode(Telling& telling, const Entry& entry) {
    const NodeEvent event = readNodeEvent(entry.message.text, telling.pipelineName);
    if (!telling.hasReport) {
        beginReport(telling, entry);
        addFinding(telling, entry, FindingKind::kGap,
                   "the report's first event is missing from the log", {});
    }
    if (entry.message.isCut) {
        addFinding(telling, entry, FindingKind::kCutEvent, kCut, event.node);
    } else {
        telling.camera = event.camera;
        telling.pipelineName = telling.pipelineName.value_or(event.pipelineName);
    }
    if (entry.message.kind == Message::Kind::kStart) {
        addStart(telling, entry, event);
    } else {
        addCompletion(telling, entry, event);
    }
}

void setValue(view::Capture& capture, const char* name, const std::string& text, bool isNumber) {
    const auto same = [&](const view::Value& value) { return value.name == name; };
    const auto known = std::find_if(capture.values.begin(), capture.values.end(), same);
    if (known != capture.values.end()) {
        known->text = text;
    } else {
        capture.values.push_back({view::Value::Group::kFrame, name, text, isNumber});
    }
}

// A later report tells of the same nodes once more.
void setNode(view::Capture& capture, view::Node node) {
    // Listed nodes begin with the time 0, and have no completion until they have run.
    node.isListed = node.start == 0.0 && !node.completion;
    const auto same = [&](const view::Node& each) { return each.name == node.name; };
    const auto known = std::find_if(capture.nodes.begin(), capture.nodes.end(), same);
    if (known != capture.nodes.end()) {
        *known = std::move(node);
    } else {
        capture.nodes.push_back(std::move(node));
    }
}

}  // namespace

void CaptureBuilder::addEvent(Process& process, const Entry& entry) {
    Thread& thread = process.threads[entry.tid];
    const bool isSubmit = entry.message.kind == Kind::kSubmit;
    if (isSubmit && thread.telling && thread.telling->hasReport) {
        endTelling(process, thread);
    }
    if (!thread.telling) {
        thread.telling.emplace();
    }
    Telling& telling = *thread.telling;
    if (isSubmit) {
        addSubmit(telling, entry);
    } else {
        addNode(telling, entry);
    }
    telling.report.events.push_back({entry.message.text, entry.message.isCut});
}

void CaptureBuilder::addFlush(Process& process, const Entry& entry) {
    Thread& thread = process.threads[entry.tid];
    const bool isWhole = thread.begunFlushes != 0;
    thread.begunFlushes -= isWhole ? 1 : 0;
    ++mFlushes;
    if (!isTellingOf(thread, entry)) {
        endTelling(process, thread);
        addEmptyFlush(process, entry, isWhole);
        return;
    }
    Telling telling = *std::exchange(thread.telling, std::nullopt);
    OpenCapture& flushed = recordOf(process, entry);
    attach(process, telling, flushed);
    addCall(flushed, entry);
}

// Whether the thread tells a report that the flush may have asked for. Without its frame's name a
// record is reported under an empty one.
bool CaptureBuilder::isTellingOf(const Thread& thread, const Entry& entry) const {
    if (!thread.telling || !thread.telling->hasReport) {
        return false;
    }
    const std::string name = thread.telling->pipelineName.value_or(std::string());
    return !thread.telling->isNamed || name.empty() || name == entry.message.name ||
           entry.message.isNameCut;
}

// Nothing was reported. With the flush's first line in the log, the last one directly after it is
// enough to say so, if the log has reports at all.
void CaptureBuilder::addEmptyFlush(Process& process, const Entry& entry, bool isWhole) {
    OpenCapture* known = process.find(entry.message);
    const bool isCertain = isWhole && mHasEngineTag;
    const char* lack =
            isWhole ? "reported nothing, unless lines of the tag ZuAlgoEngine are missing"
                    : "the report of a flush is missing from the log";
    if (known != nullptr) {
        addCall(*known, entry, !isCertain);
        find(known, entry, isCertain ? FindingKind::kNoReportType : FindingKind::kGap,
             isCertain ? "reported nothing; type 0 does" : lack);
    } else if (isCertain) {
        findUnknown(process, entry,
                    "reported nothing: its type does not, or there is no record of that name");
    } else {
        findOfSession(entry, FindingKind::kGap, lack);
    }
}

// A report of which the flush's last line has not come: it was asked for by request(), or the line
// is missing.
void CaptureBuilder::endTelling(Process& process, Thread& thread) {
    std::optional<Telling> told = std::exchange(thread.telling, std::nullopt);
    // Where the threads are not known, another one's flush may have begun.
    const bool isFlush = thread.isKnown && std::exchange(thread.begunFlushes, 0) != 0;
    if (!told || !told->hasReport) {
        return;
    }
    Entry entry;
    entry.at = told->report.at;
    entry.place = told->report.place;
    entry.message.name = told->pipelineName.value_or(std::string());
    if (entry.message.name.empty()) {
        find(nullptr, entry, FindingKind::kGap, "a report is of no known capture");
        return;
    }
    entry.pid = process.pid;
    OpenCapture& reported = recordOf(process, entry);
    attach(process, *told, reported);
    if (isFlush) {
        find(&reported, entry, FindingKind::kGap, "the end of a flush is missing from the log");
    }
}

void CaptureBuilder::attach(Process& process, Telling& telling, OpenCapture& open) {
    view::Capture& capture = open.capture;
    ++mReports;
    if (!capture.isFlushed) {
        capture.isFlushed = true;
        capture.flushed = telling.report.at;
    }
    for (view::Node& node : telling.nodes) {
        setNode(capture, std::move(node));
    }
    if (!telling.timestamp.empty()) {
        setValue(capture, "timestamp", telling.timestamp, false);
    }
    if (!telling.camera.empty()) {
        setValue(capture, "camIds[0]", telling.camera, true);
    }
    for (view::Finding& finding : telling.findings) {
        open.lacksLines = open.lacksLines || finding.kind == FindingKind::kGap;
        open.findings.add(std::move(finding), {});
    }
    if (lacksService(process) && !std::exchange(open.lacksService, true)) {
        open.findings.add({FindingKind::kNoService,
                           "reported to nobody: there is no service",
                           {},
                           telling.report.place,
                           telling.report.at},
                          {});
    }
    capture.reports.push_back(std::move(telling.report));
}

}  // namespace logcat
