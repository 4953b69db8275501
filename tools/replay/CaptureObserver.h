// Watches a log being played, and hands each capture to the views once it is over.

#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "CallKind.h"
#include "Capture.h"
#include "CaptureLog.h"
#include "CollectionState.h"
#include "Finding.h"
#include "FlushedRecords.h"
#include "InfoSynchronizerManager.h"
#include "OverlapService.h"
#include "RequestRecord.h"
#include "SessionFindings.h"
#include "TrackedCapture.h"
#include "View.h"

namespace replay {

// What became of a call is seen in the library: in its records before and after the call, and in
// what the service receives from it. So that no other call comes in between, those that change
// records wait for each other: an update from its beginning to its end, and registration and
// unregistration from the service's answer on. They would wait for the queue's mutex otherwise;
// other calls wait for nobody, so that the service may wait for any call.
//
// That takes a service that shows its calls and lets its answers be given. With another one, calls
// of several threads may be taken one for the other.
//
// Thread safety: any thread, but for the constructor and finish.
class CaptureObserver {
  public:
    struct Settings {
        bool records = false;            // put each flushed record's line to the call that ends it
        bool isTimed = false;            // all calls of the log have a time
        bool beginningsAreLost = false;  // captures may have begun in an earlier log
        bool goesOn = false;             // captures may go on in a later log
        bool isForeign = false;          // the service neither shows its calls nor lets it answer
    };

    // The view must outlive this. `session` is what is known of it before the log is played.
    CaptureObserver(view::View& view, view::Session session, const Settings& settings);
    ~CaptureObserver();
    CaptureObserver(const CaptureObserver&) = delete;
    CaptureObserver& operator=(const CaptureObserver&) = delete;

    // For Playback and the service.
    void around(const CaptureStep& step, const std::function<void()>& call);
    static void answered(const std::string& key, const std::string* answer);
    static void watch(ServiceCall& call);

    struct Counts {
        uint64_t calls;
        uint64_t flushes;
        uint64_t reports;
        uint64_t serviceCalls;
    };
    // Hands over what is left, and the session; returns the notes that the session had not before.
    // Throws what a view has thrown.
    std::vector<std::string> finish(const Counts& counts);

  private:
    using Record = camInfosync::RequestRecord;
    using RecordPointer = std::shared_ptr<const Record>;

    // What the library holds for a call.
    struct Look {
        RecordPointer record;       // that the call is about
        bool isRegistered = false;  // there is one of that name
        std::string name;           // that the record was registered under
        size_t errors = 0;
    };

    struct ObservedCall;
    class Observation;

    // A call that is over while nobody may wait.
    struct Deferred;

    Look look(const CaptureStep& step, CallKind kind) const;
    void begin(Observation& observed);
    void end(Observation& observed);
    void judgeDeferred();
    void judge(ObservedCall& call);
    void judgeRegistration(ObservedCall& call);
    void judgeUnregistration(ObservedCall& call);
    void judgeFlush(ObservedCall& call);
    void judgeRequest(ObservedCall& call);
    void judgeUpdate(ObservedCall& call);
    bool judgeSwitch(ObservedCall& call);
    void addUseless(ObservedCall& call, view::Finding finding);
    void addMissing(ObservedCall& call);
    static void addMissingService(TrackedCapture& capture, const ObservedCall& call);
    void noteDeskTimes(const TrackedCapture& capture);
    void takeReports(TrackedCapture& capture);
    void watchCall(Observation& observed, ServiceCall& call);
    std::string recordLine(const std::string& name, const Record& record) const;

    TrackedCapture* find(const std::string& name);
    TrackedCapture& track(const std::string& name, const RecordPointer& record);
    void handOn(TrackedCapture& capture, bool isOver = true);

    camInfosync::RequestRecordQueue& mQueue;
    view::View& mView;
    const Settings mSettings;

    // Taken before the queue's mutex. Guards what follows, and unless the service is foreign the
    // queue's records and their content: who changes these holds both.
    std::mutex mMutex;
    view::Session mSession;
    const size_t mFirstNote;  // of this observer, in the session
    SessionFindings mFindings;
    std::map<std::string, std::unique_ptr<TrackedCapture>> mCaptures;
    uint64_t mRegistered = 0;
    std::exception_ptr mViewThrew;

    std::mutex mDeferredMutex;                         // taken last
    std::vector<std::unique_ptr<Deferred>> mDeferred;  // guarded by mDeferredMutex

    FlushedRecords mFlushed;  // has a mutex of its own, which may be taken under the queue's
};

}  // namespace replay
