#include "CaptureBuilder.h"

#include <algorithm>
#include <cstdint>
#include <map>
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

void addCall(OpenCapture& open, const Entry& entry, bool hadEffect = true) {
    open.capture.calls.push_back(
            {entry.message.operation, {}, entry.tid, entry.at, entry.place, hadEffect});
}

// Whether the thread's last message was this warning on the same image, by `operation`.
bool isAfter(const Thread& thread, Message::Kind warning, const Entry& entry) {
    return thread.warning && thread.warning->kind == warning &&
           thread.warning->name == entry.message.name;
}

bool isFlushMissing(const view::Capture& capture) {
    return capture.isRegistered && !capture.isFlushed && capture.reports.empty();
}

// Where the log names a capture first: by a call, a report, or a warning that it has a record.
view::Place firstPlace(const view::Capture& capture) {
    return !capture.calls.empty()     ? capture.calls.front().place
           : !capture.reports.empty() ? capture.reports.front().place
                                      : capture.findings.front().place;
}

void addAtEnd(view::Capture& capture, FindingKind kind, const char* text) {
    capture.findings.push_back({kind, text, {}, firstPlace(capture), {}});
}

}  // namespace

OpenCapture& CaptureBuilder::open(Process& process, const Entry& entry) {
    OpenCapture& made = process.captures[entry.message.name];
    made.isNameCut = entry.message.isNameCut;
    made.capture.number = ++mCaptures;
    made.capture.name = entry.message.name;
    made.capture.process = entry.pid != 0 ? std::to_string(entry.pid) : std::string();
    if (made.isNameCut) {
        find(&made, entry, FindingKind::kCutEvent, "the log has the beginning of its name only");
    }
    return made;
}

void CaptureBuilder::find(OpenCapture* open, const Entry& entry, FindingKind kind,
                          const std::string& text) {
    if (open != nullptr) {
        open->capture.findings.push_back(
                {kind, text, entry.message.operation, entry.place, entry.at});
    } else {
        addToSession(entry, kind, text);
    }
}

void CaptureBuilder::addToSession(const Entry& entry, FindingKind kind, const std::string& text) {
    const std::string& name = entry.message.name;
    mSession.findings.push_back({kind, name.empty() ? text : name + ": " + text,
                                 entry.message.operation, entry.place, entry.at});
}

void CaptureBuilder::complete(Process& process, const std::string& name) {
    for (auto& [tid, thread] : process.threads) {
        if (thread.telling && thread.telling->pipelineName == name) {
            endTelling(process, thread);
        }
    }
    const auto position = process.captures.find(name);
    view::Capture capture = std::move(position->second.capture);
    process.captures.erase(position);
    process.setRemoved(name);
    for (const view::Node& node : capture.nodes) {
        if (!node.isListed && node.start && !node.completion) {
            capture.findings.push_back({FindingKind::kNoCompletion,
                                        "has started, and its completion is not in the log",
                                        node.name,
                                        node.place,
                                        {}});
        }
    }
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
    const Kind kind = entry.message.kind;
    if (kind == Kind::kStart || kind == Kind::kCompletion || kind == Kind::kSubmit) {
        addEvent(process, entry);
    } else if (kind == Kind::kFlushDone) {
        addFlush(process, entry);
    } else {
        endTelling(process, thread);
        addOther(process, entry);
    }
    const bool isWarning = kind == Kind::kUnknownName || kind == Kind::kUnknownRemoval ||
                           kind == Kind::kAlreadyRegistered;
    thread.warning = isWarning ? std::optional<Message>(entry.message) : std::nullopt;
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
            return addCall(recordOf(process, entry), entry);
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
    } else {
        if (known != nullptr && known->capture.isRegistered) {
            find(known, entry, FindingKind::kGap,
                 "is registered again; the line of its removal is not in the log");
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
        addCall(removed, entry);
        removed.capture.removed = entry.at;
        removed.capture.isRemoved = true;
        if (isFlushMissing(removed.capture)) {
            find(&removed, entry, FindingKind::kNeverFlushed, "was removed without a flush");
        }
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
    if (queueSize == 0 || (known == nullptr && queueSize <= process.captures.size())) {
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
    const std::string& name = entry.message.name;
    OpenCapture* known = process.find(entry.message);
    if (known != nullptr) {
        addCall(*known, entry, false);
        find(known, entry, FindingKind::kOtherManager,
             "found no record; on the manager of GetInstance(), which has none?");
    } else if (process.wasRemoved(name)) {
        addToSession(entry, FindingKind::kAfterRemoval, "its record has been removed");
    } else {
        addToSession(entry, FindingKind::kUnknownName,
                     "there is no record of that name" + process.guess(name));
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
        open.capture.findings.push_back(gap);
    }
    if (process->second.captures.empty()) {
        mSession.findings.push_back(gap);
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
            if (isFlushMissing(open.capture)) {
                addAtEnd(open.capture, FindingKind::kNeverFlushed,
                         "was not flushed by the end of the log");
            }
            addAtEnd(open.capture, FindingKind::kNeverRemoved,
                     "was not removed by the end of the log");
        }
    }
    for (const auto& [number, capture] : left) {
        complete(*capture.first, capture.second);
    }
    if (mPileUps != 0) {
        mSession.notes.push_back("the worker pool's tasks have piled up " +
                                 std::to_string(mPileUps) + " times, first in " +
                                 mSession.sources[mFirstPileUp.source] + ':' +
                                 std::to_string(mFirstPileUp.line));
    }
}

}  // namespace logcat
