#include "CaptureObserver.h"

#include <algorithm>
#include <cstddef>
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
#include "FindingList.h"
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
      mFirstNote(mSession.notes.size()),
      mFindings(settings.beginningsAreLost) {}

struct CaptureObserver::Deferred {
    explicit Deferred(ObservedCall observed) : step(*observed.step), call(std::move(observed)) {
        call.step = &step;
    }

    const CaptureStep step;
    ObservedCall call;
};

CaptureObserver::~CaptureObserver() = default;

void CaptureObserver::around(const CaptureStep& step, const std::function<void()>& call) {
    Observation observed(*this, step);
    begin(observed);
    call();
    end(observed);
}

void CaptureObserver::begin(Observation& observed) {
    ObservedCall& call = observed.call;
    const bool updates = isUpdate(call.kind) && !call.useless && !call.step->onOtherManager;
    if (!updates && (!asksOnly(call.kind) || hasService())) {
        return;
    }
    observed.lock.lock();
    if (updates) {
        call.before = look(*call.step, call.kind);
    }
    if (call.before.record != nullptr) {
        TrackedCapture& capture = track(call.before.name, call.before.record);
        capture.noteStage(*call.step, call.kind);
        noteDeskTimes(capture);
    }
}

// From here to the call's end, a registration or unregistration asks nobody, and takes the queue's
// mutex if collection is on.
void CaptureObserver::answered(const std::string& key, const std::string* answer) {
    Observation* observed = Observation::current();
    if (observed == nullptr || key != kCollectionKey) {
        return;
    }
    ObservedCall& call = observed->call;
    call.serviceThrew = answer == nullptr;
    call.answer = answer != nullptr ? std::optional(*answer) : std::nullopt;
    const bool isOn = !switchThatIsOff(call.answer, call.serviceThrew);
    if (asksOnly(call.kind) && isOn && !observed->lock.owns_lock()) {
        observed->lock.lock();
    }
}

void CaptureObserver::end(Observation& observed) {
    if (observed.lock.owns_lock() || observed.lock.try_lock()) {
        judgeDeferred();
        judge(observed.call);
        return;
    }
    auto deferred = std::make_unique<Deferred>(std::move(observed.call));
    const std::lock_guard<std::mutex> lock(mDeferredMutex);
    mDeferred.push_back(std::move(deferred));
}

void CaptureObserver::judgeDeferred() {
    std::vector<std::unique_ptr<Deferred>> calls;
    {
        const std::lock_guard<std::mutex> lock(mDeferredMutex);
        calls.swap(mDeferred);
    }
    for (const auto& deferred : calls) {
        judge(deferred->call);
    }
}

CaptureObserver::Look CaptureObserver::look(const CaptureStep& step, CallKind kind) const {
    const std::string& name = step.arguments.image;
    std::unique_lock<std::mutex> lock(mQueue.mutex, std::defer_lock);
    if (mSettings.isForeign) {
        lock.lock();
    }
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

void CaptureObserver::judge(ObservedCall& call) {
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
bool CaptureObserver::judgeSwitch(ObservedCall& call) {
    const auto off = switchThatIsOff(call.answer, call.serviceThrew);
    if (!off) {
        return true;
    }
    const std::string& name = call.step->arguments.image;
    mFindings.addSwitchedOff(*call.step, *off, call.answer);
    if (TrackedCapture* capture = find(name); capture != nullptr) {
        capture->addCall(*call.step, false);
    } else if (call.kind == CallKind::kRegister) {
        mFindings.noteRefused(name, *off);
    }
    return false;
}

void CaptureObserver::judgeRegistration(ObservedCall& call) {
    if (!judgeSwitch(call)) {
        return;
    }
    const RecordPointer record = look(*call.step, call.kind).record;
    if (record == nullptr) {
        return;  // removed meanwhile, which takes a foreign service
    }
    TrackedCapture& capture = track(call.image(), record);
    if (capture.isRegistered()) {
        addUseless(call, callFinding(*call.step, FindingKind::kAlreadyRegistered,
                                     "registered already, in line " +
                                             std::to_string(capture.registeredLine()) +
                                             ", and left as it is"));
        return;
    }
    capture.noteRegistration(*call.step);
    noteDeskTimes(capture);
}

void CaptureObserver::judgeUnregistration(ObservedCall& call) {
    if (!judgeSwitch(call)) {
        return;
    }
    const auto position = mCaptures.find(call.image());
    if (position == mCaptures.end() ||
        position->second->record() == look(*call.step, call.kind).record) {
        addMissing(call);
        return;
    }
    const auto capture = mCaptures.extract(position);
    capture.mapped()->noteRemoval(*call.step);
    handOn(*capture.mapped());
    mFindings.noteRemoved(capture.key(), call.step->line);
}

void CaptureObserver::judgeFlush(ObservedCall& call) {
    if (call.isReported) {
        return;  // its capture takes the report
    }
    if (!judgeSwitch(call)) {
        return;
    }
    if (call.useless) {
        addUseless(call, *std::move(call.useless));
        return;
    }
    // Without a service that shows its calls, what is there now was flushed.
    const bool isShown = hasService() && !mSettings.isForeign;
    TrackedCapture* capture = isShown ? nullptr : find(call.image());
    if (capture == nullptr) {
        addMissing(call);
        return;
    }
    capture->noteFlushWithoutReport(*call.step, hasService());
    addMissingService(*capture, call);
}

void CaptureObserver::addMissingService(TrackedCapture& capture, const ObservedCall& call) {
    if (!hasService()) {
        capture.addFinding(callFinding(*call.step, FindingKind::kNoService,
                                       "there is no service to report to"));
    }
}

void CaptureObserver::judgeRequest(ObservedCall& call) {
    if (call.useless) {
        mFindings.add(*std::move(call.useless));
        return;
    }
    const RecordPointer& record = call.step->arguments.record;
    if (record == nullptr) {
        return;  // a command
    }
    // It is a capture's that is under way, or one of its own.
    const std::string& name = call.step->arguments.image;
    TrackedCapture* capture = find(name);
    TrackedCapture own(mRegistered + 1, name, record);
    if (capture == nullptr) {
        mRegistered += 1;
        own.noteGiven(*call.step);
        capture = &own;
    }
    if (call.requested.empty()) {
        capture->addCall(*call.step, hasService());
        addMissingService(*capture, call);
    }
    for (view::Report& report : call.requested) {
        capture->noteReport({callOf(*call.step), std::move(report), {}}, false);
    }
    if (capture == &own) {
        handOn(own);
    }
}

void CaptureObserver::judgeUpdate(ObservedCall& call) {
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
        addUseless(
                call,
                callFinding(*call.step, FindingKind::kBeforeFrameInfo,
                            "goes by the name that updateFrameInfo tells, and none has told it"));
        return;
    }
    TrackedCapture& capture = track(call.before.name, call.before.record);
    std::optional<view::Finding> unknown = unknownStages(*call.step, call.kind);
    capture.addCall(*call.step, !unknown || !view::meansNoEffect(unknown->kind));
    if (unknown) {
        capture.addFinding(*std::move(unknown));
    }
    capture.noteUpdate(*call.step, call.kind, call.before.errors);
}

void CaptureObserver::addMissing(ObservedCall& call) {
    mFindings.addMissing(*call.step, find(call.step->arguments.image) != nullptr);
}

// Adds a finding on a call to its capture if there is one.
void CaptureObserver::addUseless(ObservedCall& call, view::Finding finding) {
    const std::string& name = call.step->arguments.image;
    if (TrackedCapture* capture = find(name); capture != nullptr) {
        capture->addCall(*call.step, false);
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

void CaptureObserver::handOn(TrackedCapture& capture, bool isOver) {
    takeReports(capture);
    mFlushed.forget(capture.record().get());
    if (capture.callsLeftOut() != 0) {
        mSession.notes.push_back(shortened(capture.name()) + ": " +
                                 std::to_string(capture.callsLeftOut()) +
                                 " more calls are not shown");
    }
    if (mViewThrew != nullptr) {
        return;
    }
    try {
        mView.add(capture.complete(isOver), mSession);
    } catch (const std::runtime_error&) {
        mViewThrew = std::current_exception();
    }
}

std::vector<std::string> CaptureObserver::finish(const Counts& counts) {
    const std::lock_guard<std::mutex> lock(mMutex);
    judgeDeferred();
    std::vector<std::unique_ptr<TrackedCapture>> left;
    left.reserve(mCaptures.size());
    for (auto& [name, capture] : mCaptures) {
        left.push_back(std::move(capture));
    }
    mCaptures.clear();
    std::sort(left.begin(), left.end(),
              [](const auto& one, const auto& other) { return one->number() < other->number(); });
    for (const auto& capture : left) {
        handOn(*capture, !mSettings.goesOn);
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
    return {mSession.notes.begin() + static_cast<std::ptrdiff_t>(mFirstNote), mSession.notes.end()};
}

}  // namespace replay
