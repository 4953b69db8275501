// What the builder makes of the library's warnings, of its switch and of its construction.

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
    mSession.switches[kSupported] = isSupported ? "true" : "false";
    mSession.switches["collection"] = !isSupported ? std::string("off: not supported")
                                      : !isEnabled ? "off: the service answers " + quoted(answer)
                                      : answer == "enabled"
                                              ? "on: the service answers " + quoted(answer)
                                              : std::string("on: forced by ") + kForced;
    Thread& thread = process.threads[entry.tid];
    if (isSupported && isEnabled) {
        thread.telling.emplace().isFlush = true;
        return;
    }
    const std::string kind = isSupported ? kCommand : kSupported;
    if (!mSwitchesOff.insert(kind).second) {
        ++mSession.calls;
        return;
    }
    findOfSession(entry, FindingKind::kCollectionOff,
                  isSupported
                          ? "collection is off: the service answers " + quoted(answer) + " to " +
                                    kCommand + ", not \"enabled\", and " + kForced + " is not true"
                          : std::string("collection is off: ") + kSupported + " is not true");
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
    } else if (process.service != Process::Service::kThere &&
               (hasFailed || (message.kind == Kind::kConstructExit && thread.isConstructing))) {
        process.service = Process::Service::kNone;
        mSession.switches["service"] = "none";
    }
}

}  // namespace logcat
