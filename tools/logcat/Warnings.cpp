// What the builder makes of the library's warnings, of its switch and of its construction.

#include <map>
#include <string>
#include <string_view>

#include "CaptureBuilder.h"
#include "Cursor.h"
#include "Finding.h"
#include "Message.h"
#include "Process.h"

namespace logcat {
namespace {

using view::FindingKind;

constexpr char kSupported[] = "persist.vendor.camera.camquill.supported";
constexpr char kForced[] = "persist.vendor.camera.infoSyncCollect.forceEnabled";
constexpr char kCommand[] = "snapshotInfoCollectEnable";

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

std::string stateOf(bool isSupported, bool isEnabled, const std::string& answer) {
    const std::string service =
            answer.empty() ? "no service answers" : "the service answers " + quoted(answer);
    return !isSupported          ? std::string("off: not supported")
           : !isEnabled          ? "off: " + service
           : answer == "enabled" ? "on: " + service
                                 : std::string("on: forced by ") + kForced;
}

}  // namespace

void CaptureBuilder::addWarning(Process& process, const Entry& entry) {
    const Message& message = entry.message;
    OpenCapture* known = message.name.empty() ? nullptr : process.find(message);
    switch (message.kind) {
        case Kind::kUnknownName:
            return addUnknownName(process, entry);
        case Kind::kUnknownRemoval:
            if (known == nullptr) {
                return addUnknownName(process, entry);
            }
            find(known, entry, FindingKind::kGap,
                 "has no record any more; the line of its removal is not in the log");
            return complete(process, std::string(known->capture.name));
        case Kind::kAlreadyRegistered:
            return find(&recordOf(process, entry), entry, FindingKind::kAlreadyRegistered,
                        "registered already");
        case Kind::kCodeOutOfRange:
            return addCode(entry);
        case Kind::kNoErrorText:
            if (known == nullptr) {
                return findOfSession(entry, FindingKind::kNothingGiven, "no error text is given");
            }
            addCall(*known, entry, false);
            return find(known, entry, FindingKind::kNothingGiven, "no error text is given");
        case Kind::kVendorError:
            return addVendorError(process, entry);
        case Kind::kPileUp:
            mFirstPileUp = mPileUps++ == 0 ? entry.place : mFirstPileUp;
            return;
        default:
            return findOfSession(entry, FindingKind::kNothingGiven,
                                 "null is given where there must be more");
    }
}

void CaptureBuilder::addCode(const Entry& entry) {
    const bool isState = entry.message.operation == "updateNodeProcState";
    findOfSession(entry, isState ? FindingKind::kStateOutOfRange : FindingKind::kCodeOutOfRange,
                  (isState ? "state " : "error code ") + entry.message.text +
                          " is none; they go from 0 to 4");
}

// The line does not name its image. It is certain only if there is one record and no other.
void CaptureBuilder::addVendorError(Process& process, const Entry& entry) {
    const bool isCertain = process.knowsAll() && process.captures.size() == 1;
    const std::string text = "vendor result " + entry.message.text;
    if (isCertain) {
        OpenCapture& failed = process.captures.begin()->second;
        addCall(failed, entry);
        find(&failed, entry, FindingKind::kVendorError, text);
    } else {
        findOfSession(entry, FindingKind::kVendorError,
                      text + ", of a capture that the line does not tell");
    }
}

void CaptureBuilder::addSwitch(Process& process, const Entry& entry) {
    Cursor cursor(entry.message.text);
    const bool isSupported = !cursor.take("0");
    std::string_view ignored;
    cursor.takeUpTo("infoSyncCollectEnabled:", ignored);
    const bool isEnabled = !cursor.take("0");
    cursor.takeUpTo("cmdVal: ", ignored);
    const std::string answer(cursor.rest());
    process.switches[kSupported] = isSupported ? "true" : "false";
    process.switches["collection"] = stateOf(isSupported, isEnabled, answer);
    if (isSupported && isEnabled) {
        ++process.threads[entry.tid].begunFlushes;
        return;
    }
    ++mFlushes;
    ++mSession.calls;
    ++mSwitchedOff.try_emplace(isSupported, SwitchedOff{entry, answer, 0}).first->second.calls;
}

// An empty answer is also what is logged without a service.
std::string CaptureBuilder::answerText(const SwitchedOff& off) const {
    const Process& process = mProcesses.at(off.first.pid);
    const std::string answer = "answers " + quoted(off.answer) + " to " + kCommand;
    const bool isAnswered = process.service == Process::Service::kThere || !off.answer.empty();
    return isAnswered              ? "the service " + answer + ", not \"enabled\""
           : lacksService(process) ? "there is no service"
                                   : "there is no service, or it " + answer;
}

// What has been switched off, and the state of the switches, which may differ between processes.
// Whether there was a service may be known only now.
void CaptureBuilder::finishSwitches() {
    for (const auto& [isAnswer, off] : mSwitchedOff) {
        const std::string reason =
                isAnswer ? answerText(off) + ", and " + kForced : std::string(kSupported);
        mFindings.add({FindingKind::kCollectionOff,
                       "collection is off: " + reason + " is not true",
                       {},
                       off.first.place,
                       off.first.at,
                       off.calls},
                      {});
    }
    std::map<std::string, std::map<std::string, std::string>> processes;  // by switch and state
    for (auto& [pid, process] : mProcesses) {
        if (lacksService(process)) {
            process.switches["service"] = "none";
        }
        for (const auto& [name, state] : process.switches) {
            std::string& list = processes[name][state];
            list += (list.empty() ? " (process " : ", ") + std::to_string(pid);
        }
    }
    for (const auto& [name, states] : processes) {
        std::string& text = mSession.switches[name];
        for (const auto& [state, list] : states) {
            text += (text.empty() ? "" : "; ") + state + (states.size() > 1 ? list + ')' : "");
        }
    }
}

bool CaptureBuilder::lacksService(const Process& process) const {
    return process.service == Process::Service::kNone ||
           (process.service == Process::Service::kNotFound && mHasEngineTag);
}

void CaptureBuilder::addConstruction(Process& process, const Entry& entry) {
    Thread& thread = process.threads[entry.tid];
    const Message& message = entry.message;
    const bool hasFailed = message.text == "Load() return...(2)" ||
                           message.text == "the overlap library has thrown an exception";
    if (message.kind == Kind::kServiceFound) {
        process.service = Process::Service::kThere;
    } else if (message.kind == Kind::kConstructEnter) {
        thread.isConstructing = true;
    } else if (process.service == Process::Service::kThere) {
        return;
    } else if (hasFailed) {
        process.service = Process::Service::kNone;
    } else if (message.kind == Kind::kConstructExit && thread.isConstructing &&
               process.service == Process::Service::kNotKnown) {
        process.service = Process::Service::kNotFound;
    }
}

}  // namespace logcat
