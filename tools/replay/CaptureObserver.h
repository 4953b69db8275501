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
// unregistration from the service's answer on. Nothing waits here while the service may run.
//
// Thread safety: any thread, but for the constructor and finish.
class CaptureObserver {
  public:
    struct Settings {
        bool records = false;            // put each flushed record's line to the call that ends it
        bool isTimed = false;            // all calls of the log have a time
        bool beginningsAreLost = false;  // captures may have begun in an earlier log
        bool canWatch = false;           // the service shows its calls
    };

    // The view must outlive this. `session` is what is known of it before the log is played.
    CaptureObserver(view::View& view, view::Session session, const Settings& settings);

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
    // Hands over what is left, and the session. Throws what a view has thrown.
    void finish(const Counts& counts);

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

    // A call from its beginning to its end.
    class Observation;

    Look look(const CaptureStep& step, CallKind kind) const;
    void judge(Observation& call);
    void judgeRegistration(Observation& call);
    void judgeUnregistration(Observation& call);
    void judgeFlush(Observation& call);
    void judgeRequest(Observation& call);
    void judgeUpdate(Observation& call);
    bool judgeSwitch(Observation& call);
    void addUseless(Observation& call, view::Finding finding);
    void addMissing(Observation& call);
    void noteDeskTimes(const TrackedCapture& capture);
    void takeReports(TrackedCapture& capture);
    void watchCall(Observation& observed, ServiceCall& call);
    std::string recordLine(const std::string& name, const Record& record) const;

    TrackedCapture* find(const std::string& name);
    TrackedCapture& track(const std::string& name, const RecordPointer& record);
    void handOn(TrackedCapture& capture);
    void end(const std::string& name, const CaptureStep& step);

    camInfosync::RequestRecordQueue& mQueue;
    view::View& mView;
    const Settings mSettings;

    std::mutex mMutex;  // taken before the queue's. Guards what follows
    view::Session mSession;
    SessionFindings mFindings;
    std::map<std::string, std::unique_ptr<TrackedCapture>> mCaptures;
    uint64_t mRegistered = 0;
    std::exception_ptr mViewThrew;

    FlushedRecords mFlushed;  // has a mutex of its own, which may be taken under the queue's
};

}  // namespace replay
