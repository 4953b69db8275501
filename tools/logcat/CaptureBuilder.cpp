#include "CaptureBuilder.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "Message.h"
#include "Process.h"
#include "View.h"

namespace logcat {
namespace {

using view::FindingKind;

// Whether the thread's last message was of that kind, on the same image.
bool isAfter(const Thread& thread, Message::Kind kind, const Entry& entry) {
    const Message* last = thread.lastOn(entry.message.name);
    return last != nullptr && last->kind == kind;
}

// Whether the message has the engine's tag. Where there are no tags it is known by this alone.
bool isOfEngine(Message::Kind kind) {
    using Kind = Message::Kind;
    return kind == Kind::kSubmit || kind == Kind::kStart || kind == Kind::kCompletion ||
           kind == Kind::kAlreadyRegistered || kind == Kind::kUnknownRemoval ||
           kind == Kind::kServiceFound || kind == Kind::kPileUp;
}

using Stages = std::vector<view::Stage>;

constexpr uint32_t kStages = 15;

// The number that a stage's name begins with, from 1 to 15; UINT32_MAX if it is no stage's.
uint32_t stageNumber(std::string_view name) {
    uint32_t number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number);
    return number >= 1 && number <= kStages ? number : UINT32_MAX;
}

bool isReportMissing(const view::Capture& capture) {
    return capture.isRegistered && !capture.isFlushed;
}

}  // namespace

OpenCapture& CaptureBuilder::open(Process& process, const Entry& entry) {
    OpenCapture& made = process.captures[entry.message.name];
    made.isNameCut = entry.message.isNameCut;
    process.hasCutNames = process.hasCutNames || made.isNameCut;
    made.capture.number = ++mCaptures;
    made.capture.name = entry.message.name;
    made.firstPlace = entry.place;
    process.addName(entry.message.name);
    made.capture.process = entry.pid != 0 ? std::to_string(entry.pid) : std::string();
    if (made.isNameCut) {
        find(&made, entry, FindingKind::kCutEvent, "the log has the beginning of its name only");
    }
    return made;
}

void CaptureBuilder::addCall(OpenCapture& open, const Entry& entry, bool hadEffect) {
    ++mSession.calls;
    open.capture.calls.push_back(
            {entry.message.operation, {}, entry.tid, entry.at, entry.place, hadEffect});
}

void CaptureBuilder::find(OpenCapture* open, const Entry& entry, FindingKind kind,
                          const std::string& text) {
    const bool isOfCall = view::meansNoEffect(kind) && kind != FindingKind::kCollectionOff;
    const std::string operation = isOfCall ? entry.message.operation : std::string();
    const std::string& name = entry.message.name;
    view::Finding finding{kind, operation.empty() ? text : operation + ": " + text, operation,
                          entry.place, entry.at};
    if (open != nullptr) {
        open->lacksLines = open->lacksLines || kind == FindingKind::kGap;
        open->findings.add(std::move(finding), operation);
        return;
    }
    if (!name.empty()) {
        finding.text.insert(0, name + ": ");
    }
    mFindings.add(std::move(finding), name + operation);
}

// What happened in a call that belongs to no capture.
void CaptureBuilder::findOfSession(const Entry& entry, FindingKind kind, const std::string& text) {
    ++mSession.calls;
    find(nullptr, entry, kind, text);
}

void CaptureBuilder::findUnknown(const Process& process, const Entry& entry,
                                 const std::string& text) {
    const std::string& name = entry.message.name;
    if (process.wasRemoved(name)) {
        findOfSession(entry, FindingKind::kAfterRemoval, "its record has been removed");
    } else if (mFindings.keeps(FindingKind::kUnknownName, name + entry.message.operation)) {
        findOfSession(entry, FindingKind::kUnknownName, text + process.guess(name));
    } else {
        findOfSession(entry, FindingKind::kUnknownName, text);
    }
}

// Of other threads: their reports have no line that ends them.
void CaptureBuilder::endTellingsOf(Process& process, const std::string& name) {
    for (auto& [tid, thread] : process.threads) {
        if (thread.telling && thread.telling->pipelineName == name) {
            endTelling(process, thread);
        }
    }
}

void CaptureBuilder::complete(Process& process, const std::string& name) {
    endTellingsOf(process, name);
    const auto position = process.captures.find(name);
    OpenCapture completed = std::move(position->second);
    process.captures.erase(position);
    view::Capture& capture = completed.capture;
    const bool mayCome = completed.lacksLines || !capture.isRemoved;
    for (const view::Node& node : capture.nodes) {
        if (!node.isListed && node.start && !node.completion) {
            completed.findings.add(
                    {mayCome ? FindingKind::kGap : FindingKind::kNoCompletion,
                     "node " + node.name + " has started, and its completion is not in the log",
                     node.name,
                     node.place,
                     {}},
                    node.name);
        }
    }
    capture.findings = completed.findings.take();
    std::sort(capture.nodes.begin(), capture.nodes.end(), [](const auto& left, const auto& right) {
        return std::pair(left.start.value_or(0), left.name) <
               std::pair(right.start.value_or(0), right.name);
    });
    mView.add(capture, mSession);
}

void CaptureBuilder::add(const Entry& entry) {
    Process& process = mProcesses[entry.pid];
    process.pid = entry.pid;
    Thread& thread = process.threads[entry.tid];
    thread.isKnown = entry.tid != 0;
    const Kind kind = entry.message.kind;
    mHasEngineTag = mHasEngineTag || isOfEngine(kind);
    if (kind == Kind::kStart || kind == Kind::kCompletion || kind == Kind::kSubmit) {
        addEvent(process, entry);
    } else if (kind == Kind::kFlushDone) {
        addFlush(process, entry);
    } else {
        if (thread.isKnown) {  // otherwise the line may be another thread's
            endTelling(process, thread);
        }
        addOther(process, entry);
    }
    thread.setLast(entry.message);
}

void CaptureBuilder::addOther(Process& process, const Entry& entry) {
    switch (entry.message.kind) {
        case Kind::kRegister:
            return addRegistration(process, entry);
        case Kind::kUnregister:
            return addRemoval(process, entry);
        case Kind::kFrame:
        case Kind::kAlgorithms:
        case Kind::kNodeTimes:
            return addUpdate(process, entry);
        case Kind::kTimeMap:
            return addStage(process, entry);
        case Kind::kSwitch:
            return addSwitch(process, entry);
        case Kind::kConstructEnter:
        case Kind::kConstructExit:
        case Kind::kServiceFound:
        case Kind::kOverlap:
            return addConstruction(process, entry);
        default:
            return addWarning(process, entry);
    }
}

// The capture that a message names; of one that it has a record of for certain.
OpenCapture& CaptureBuilder::recordOf(Process& process, const Entry& entry) {
    OpenCapture* known = process.find(entry.message);
    return known != nullptr ? *known : open(process, entry);
}

void CaptureBuilder::addRegistration(Process& process, const Entry& entry) {
    OpenCapture* known = process.find(entry.message);
    if (isAfter(process.threads[entry.tid], Kind::kAlreadyRegistered, entry)) {
        addCall(recordOf(process, entry), entry, false);
    } else if (known != nullptr && known->capture.isRegistered && !mHasEngineTag) {
        addCall(*known, entry);
        find(known, entry, FindingKind::kGap,
             "registered again: it was already, or the line of its removal is not in the log");
    } else {
        if (known != nullptr && known->capture.isRegistered) {
            find(known, entry, FindingKind::kGap,
                 "registered again; the line of its removal is not in the log");
            complete(process, known->capture.name);
        }
        // A line of another thread on the new record can come before that of its registration.
        OpenCapture& made = recordOf(process, entry);
        made.capture.isRegistered = true;
        made.capture.registered = entry.at;
        addCall(made, entry);
    }
    process.noteQueueSize(entry.message.queueSize.value_or(UINT64_MAX));
}

void CaptureBuilder::addRemoval(Process& process, const Entry& entry) {
    if (!isAfter(process.threads[entry.tid], Kind::kUnknownRemoval, entry)) {
        OpenCapture& removed = recordOf(process, entry);
        endTellingsOf(process, removed.capture.name);
        addCall(removed, entry);
        removed.capture.removed = entry.at;
        removed.capture.isRemoved = true;
        if (isReportMissing(removed.capture)) {
            find(&removed, entry,
                 removed.lacksLines ? FindingKind::kGap : FindingKind::kNeverFlushed,
                 "registered and unregistered without a report in the log");
        }
        process.setRemoved(removed.capture.name, entry.place.line);
        complete(process, std::string(removed.capture.name));
    }
    process.noteQueueSize(entry.message.queueSize.value_or(UINT64_MAX));
}

void CaptureBuilder::addUpdate(Process& process, const Entry& entry) {
    if (isAfter(process.threads[entry.tid], Kind::kUnknownName, entry)) {
        return;  // the warning was the finding
    }
    const uint64_t queueSize = entry.message.queueSize.value_or(UINT64_MAX);
    OpenCapture* known = process.find(entry.message);
    const bool isOfKnown = process.knowsAll() && queueSize == process.captures.size();
    if (queueSize == 0 || (known == nullptr && isOfKnown)) {
        return addUnknownName(process, entry);
    }
    OpenCapture& updated = recordOf(process, entry);
    updated.hasFrame = updated.hasFrame || entry.message.kind == Kind::kFrame;
    const bool hadEffect = updated.hasFrame || !updated.capture.isRegistered;
    addCall(updated, entry, hadEffect);
    if (!hadEffect) {
        find(&updated, entry, FindingKind::kBeforeFrameInfo,
             "goes by the frame's name, which updateFrameInfo has not given yet");
    }
    process.noteQueueSize(queueSize);
}

void CaptureBuilder::addUnknownName(Process& process, const Entry& entry) {
    OpenCapture* known = process.find(entry.message);
    if (known != nullptr) {
        addCall(*known, entry, false);
        find(known, entry, FindingKind::kOtherManager,
             "found no record; on the manager of GetInstance(), which has none?");
    } else {
        findUnknown(process, entry, "there is no record of that name");
    }
}

// The stages of one call come in order, a line each. What they print of the time is no number.
void CaptureBuilder::addStage(Process& process, const Entry& entry) {
    const Thread& thread = process.threads[entry.tid];
    OpenCapture& staged = recordOf(process, entry);
    const uint32_t number = stageNumber(entry.message.text);
    const bool isFirst = !isAfter(thread, Kind::kTimeMap, entry);
    if (isFirst || stageNumber(thread.lastOn(entry.message.name)->text) >= number) {
        addCall(staged, entry);
    }
    if (number > kStages) {
        return;
    }
    auto& stages = staged.capture.stages.emplace(staged.capture.stages.value_or(Stages{}));
    const auto position = std::find_if(stages.begin(), stages.end(), [&](const auto& stage) {
        return stage.number + 1 >= number;
    });
    if (position == stages.end() || position->number + 1 != number) {
        stages.insert(position, {number - 1, entry.message.text, -1, false});
    }
}

void CaptureBuilder::addGap(int32_t pid, const std::string& text, view::Time at,
                            view::Place place) {
    const auto process = mProcesses.find(pid);
    if (process == mProcesses.end()) {
        return;
    }
    const view::Finding gap{FindingKind::kGap, text, {}, place, at};
    for (auto& [name, open] : process->second.captures) {
        open.lacksLines = true;
        open.findings.add(gap, {});
    }
    for (auto& [tid, thread] : process->second.threads) {
        thread.begunFlushes = 0;
    }
    if (process->second.captures.empty()) {
        mFindings.add(gap, {});
    }
}

void CaptureBuilder::finish() {
    std::map<uint64_t, std::pair<Process*, std::string>> left;
    for (auto& [pid, process] : mProcesses) {
        for (auto& [tid, thread] : process.threads) {
            endTelling(process, thread);
        }
        for (auto& [name, open] : process.captures) {
            left[open.capture.number] = {&process, name};
            const char* text = isReportMissing(open.capture)
                                       ? "neither reported nor unregistered by the end of the log"
                                       : "not unregistered by the end of the log";
            open.findings.add({FindingKind::kNeverRemoved, text, {}, open.firstPlace, {}}, {});
        }
    }
    for (const auto& [number, capture] : left) {
        complete(*capture.first, capture.second);
    }
    finishSwitches();
    mSession.findings = mFindings.take();
    mSession.flushes = mFlushes;
    mSession.reports = mReports;
    if (mPileUps != 0) {
        mSession.notes.push_back("the worker pool's tasks have piled up " +
                                 std::to_string(mPileUps) + " times, first in " +
                                 mSession.sources[mFirstPileUp.source] + ':' +
                                 std::to_string(mFirstPileUp.line));
    }
}

}  // namespace logcat
