#include "CaptureObserver.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "CallKind.h"
#include "CallRules.h"
#include "Capture.h"
#include "CaptureLog.h"
#include "CollectionState.h"
#include "Finding.h"
#include "InfoSynchronizerManager.h"
#include "LogCheck.h"
#include "Observation.h"
#include "RequestRecord.h"
#include "RequestRecordQueue.h"
#include "TrackedCapture.h"
#include "View.h"

namespace replay {

using view::FindingKind;

thread_local CaptureObserver::Observation* CaptureObserver::Observation::innermost = nullptr;

CaptureObserver::CaptureObserver(view::View& view, view::Session session, const Settings& settings)
    : mQueue(*camInfosync::InfoSynchronizerManager::getInstance().mRequestRecordQueue),
      mView(view),
      mSettings(settings),
      mSession(std::move(session)),
      mFindings(settings.beginningsAreLost) {}

void CaptureObserver::around(const CaptureStep& step, const std::function<void()>& call) {
    Observation observed(*this, step);
    // Of the others, those wait that take the queue's mutex anyway and ask nobody before.
    const bool updates = isUpdate(observed.kind) && !observed.useless;
    const bool waits = updates || (asksOnly(observed.kind) && !hasService());
    observed.lock.lock();
    observed.before = look(step, observed.kind);
    if (updates && observed.before.record != nullptr) {
        TrackedCapture& capture = track(observed.before.name, observed.before.record);
        capture.noteStage(step, observed.kind);
        noteDeskTimes(capture);
    }
    if (!waits) {
        observed.lock.unlock();
    }
    call();
    if (!observed.lock.owns_lock()) {
        observed.lock.lock();
    }
    judge(observed);
}

// From here to the call's end, a registration or unregistration asks nobody.
void CaptureObserver::answered(const std::string& key, const std::string* answer) {
    Observation* call = Observation::current();
    if (call == nullptr || key != kCollectionKey) {
        return;
    }
    call->serviceThrew = answer == nullptr;
    call->answer = answer != nullptr ? std::optional(*answer) : std::nullopt;
    if (asksOnly(call->kind) && !call->lock.owns_lock()) {
        call->lock.lock();
        call->before = call->owner.look(call->step, call->kind);
    }
}

CaptureObserver::Look CaptureObserver::look(const CaptureStep& step, CallKind kind) const {
    const std::string& name = step.arguments.image;
    const std::lock_guard<std::mutex> lock(mQueue.mutex);
    const auto position = mQueue.records.find(name);
    Look look;
    look.isRegistered = position != mQueue.records.end();
    if (!goesByFrame(kind) || !name.empty()) {
        const bool isFound = look.isRegistered &&
                             (!goesByFrame(kind) || position->second->frameInfo.imageName == name);
        look.record = isFound ? position->second : nullptr;
        look.name = name;
    } else {
        // The empty name is that of the first frame that has not been told.
        for (const auto& [key, record] : mQueue.records) {
            if (record->frameInfo.imageName.empty()) {
                look.record = record;
                look.name = key;
                break;
            }
        }
    }
    look.errors = look.record != nullptr ? look.record->errorInfo.size() : 0;
    return look;
}

void CaptureObserver::judge(Observation& call) {
    switch (call.kind) {
        case CallKind::kRegister:
            judgeRegistration(call);
            break;
        case CallKind::kUnregister:
            judgeUnregistration(call);
            break;
        case CallKind::kFlush:
            judgeFlush(call);
            break;
        case CallKind::kRequest:
            judgeRequest(call);
            break;
        default:
            judgeUpdate(call);
            break;
    }
}

// Returns whether no switch has kept the call from its effect.
bool CaptureObserver::judgeSwitch(Observation& call) {
    const auto off = switchThatIsOff(call.answer, call.serviceThrew);
    if (!off) {
        return true;
    }
    const std::string& name = call.step.arguments.image;
    mFindings.addSwitchedOff(call.step, *off, call.answer.value_or(""));
    if (TrackedCapture* capture = find(name); capture != nullptr) {
        capture->addCall(call.step, false);
    } else if (call.kind == CallKind::kRegister) {
        mFindings.noteRefused(name, *off);
    }
    return false;
}

void CaptureObserver::judgeRegistration(Observation& call) {
    if (!judgeSwitch(call)) {
        return;
    }
    const std::string& name = call.step.arguments.image;
    const Look after = look(call.step, call.kind);
    if (after.record == nullptr) {
        return;  // another thread has removed it already, where nobody could be made to wait
    }
    TrackedCapture& capture = track(name, after.record);
    if (after.record != call.before.record && !capture.isRegistered()) {
        capture.noteRegistration(call.step);
        noteDeskTimes(capture);
        return;
    }
    addUseless(call, {FindingKind::kAlreadyRegistered,
                      std::string(call.step.operation) + ": registered already, in line " +
                              std::to_string(capture.registeredLine()) + ", and left as it is",
                      std::string(call.step.operation), originOf(call.step).place,
                      originOf(call.step).at});
}

void CaptureObserver::judgeUnregistration(Observation& call) {
    if (!judgeSwitch(call)) {
        return;
    }
    const std::string& name = call.step.arguments.image;
    const TrackedCapture* capture = find(name);
    if (capture != nullptr && capture->record() != look(call.step, call.kind).record) {
        end(name, call.step);
    } else {
        addMissing(call);
    }
}

void CaptureObserver::judgeFlush(Observation& call) {
    const std::string& name = call.step.arguments.image;
    if (call.isReported) {
        // If the capture is over meanwhile, it has taken the report with it.
        if (TrackedCapture* capture = find(name); capture != nullptr) {
            takeReports(*capture);
        }
        return;
    }
    if (!judgeSwitch(call)) {
        return;
    }
    if (call.useless) {
        addUseless(call, *std::move(call.useless));
        return;
    }
    // Without a service that shows its calls, only a look before the flush tells whether there was
    // something to report.
    TrackedCapture* capture = mSettings.canWatch ? nullptr : find(name);
    if (capture == nullptr || call.before.record != capture->record()) {
        addMissing(call);
        return;
    }
    capture->noteFlushWithoutReport(call.step);
    if (!hasService()) {
        capture->addFinding(
                {FindingKind::kNoService,
                 std::string(call.step.operation) + ": there is no service to report to",
                 std::string(call.step.operation), originOf(call.step).place,
                 originOf(call.step).at});
    }
}

void CaptureObserver::judgeRequest(Observation& call) {
    if (call.useless) {
        mFindings.add(*std::move(call.useless));
        return;
    }
    const RecordPointer& record = call.step.arguments.record;
    if (record == nullptr) {
        return;  // a command
    }
    // It is a capture's that is under way, or one of its own.
    const std::string& name = call.step.arguments.image;
    TrackedCapture* capture = find(name);
    TrackedCapture own(mRegistered + 1, name, record);
    if (capture == nullptr) {
        mRegistered += 1;
        own.noteGiven(call.step);
        capture = &own;
    }
    for (view::Report& report : call.requested) {
        capture->noteReport({callOf(call.step), std::move(report), {}}, false);
    }
    if (capture == &own) {
        handOn(own);
    }
}

void CaptureObserver::judgeUpdate(Observation& call) {
    if (call.useless) {
        addUseless(call, *std::move(call.useless));
        return;
    }
    if (call.kind == CallKind::kPostProcessing) {
        return;
    }
    if (call.before.record == nullptr) {
        if (!call.before.isRegistered) {
            addMissing(call);
            return;
        }
        addUseless(call,
                   {FindingKind::kBeforeFrameInfo,
                    std::string(call.step.operation) +
                            ": goes by the name that updateFrameInfo tells, and none has told it",
                    std::string(call.step.operation), originOf(call.step).place,
                    originOf(call.step).at});
        return;
    }
    TrackedCapture& capture = track(call.before.name, call.before.record);
    std::vector<view::Finding> findings = unknownStages(call.step, call.kind);
    capture.addCall(call.step,
                    findings.empty() || findings.size() < call.step.arguments.names.size());
    for (view::Finding& finding : findings) {
        capture.addFinding(std::move(finding));
    }
    const std::lock_guard<std::mutex> lock(mQueue.mutex);
    capture.noteUpdate(call.step, call.kind, call.before.errors);
}

void CaptureObserver::addMissing(Observation& call) {
    mFindings.addMissing(call.step, find(call.step.arguments.image) != nullptr);
}

// Adds a finding on a call to its capture if there is one.
void CaptureObserver::addUseless(Observation& call, view::Finding finding) {
    const std::string& name = call.step.arguments.image;
    if (TrackedCapture* capture = find(name); capture != nullptr) {
        capture->addCall(call.step, false);
        capture->addFinding(std::move(finding));
    } else {
        mFindings.add(std::move(finding), name);
    }
}

void CaptureObserver::noteDeskTimes(const TrackedCapture& capture) {
    if (mSettings.records && !mSettings.isTimed) {
        mFlushed.setDeskTimes(capture.record().get(), capture.deskTimes());
    }
}

void CaptureObserver::takeReports(TrackedCapture& capture) {
    for (ReportedRecord& report : mFlushed.take(capture.record().get())) {
        capture.noteReport(std::move(report), true);
    }
}

TrackedCapture* CaptureObserver::find(const std::string& name) {
    const auto position = mCaptures.find(name);
    return position != mCaptures.end() ? position->second.get() : nullptr;
}

// The capture of that record, which begins if it is new.
TrackedCapture& CaptureObserver::track(const std::string& name, const RecordPointer& record) {
    std::unique_ptr<TrackedCapture>& capture = mCaptures[name];
    if (capture != nullptr && capture->record() != record) {
        handOn(*capture);
        capture.reset();
    }
    if (capture == nullptr) {
        capture = std::make_unique<TrackedCapture>(++mRegistered, name, record);
        mFindings.noteRegistered(name);
    }
    return *capture;
}

void CaptureObserver::end(const std::string& name, const CaptureStep& step) {
    const auto capture = mCaptures.extract(name);
    capture.mapped()->noteRemoval(step);
    handOn(*capture.mapped());
    mFindings.noteRemoved(name, step.line);
}

void CaptureObserver::handOn(TrackedCapture& capture) {
    takeReports(capture);
    mFlushed.forget(capture.record().get());
    if (mViewThrew != nullptr) {
        return;
    }
    try {
        mView.add(capture.complete(), mSession);
    } catch (const std::runtime_error&) {
        mViewThrew = std::current_exception();
    }
}

void CaptureObserver::finish(const Counts& counts) {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::unique_ptr<TrackedCapture>> left;
    for (auto& [name, capture] : mCaptures) {
        left.push_back(std::move(capture));
    }
    mCaptures.clear();
    std::sort(left.begin(), left.end(),
              [](const auto& one, const auto& other) { return one->number() < other->number(); });
    for (const auto& capture : left) {
        handOn(*capture);
    }
    mSession.calls = counts.calls;
    mSession.flushes = counts.flushes;
    mSession.reports = counts.reports;
    mSession.serviceCalls = counts.serviceCalls;
    mSession.findings = mFindings.take();
    if (mViewThrew != nullptr) {
        std::rethrow_exception(mViewThrew);
    }
    mView.finish(mSession);
}

}  // namespace replay
