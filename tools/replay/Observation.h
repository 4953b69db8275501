// A call while it is observed.

#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "CallKind.h"
#include "CallRules.h"
#include "Capture.h"
#include "CaptureLog.h"
#include "CaptureObserver.h"
#include "Finding.h"

namespace replay {

// What is known of a call once it is over.
struct CaptureObserver::ObservedCall {
    explicit ObservedCall(const CaptureStep& observed)
        : step(&observed), kind(kindOf(observed)), useless(uselessCall(observed, kind)) {}

    std::string image() const { return step->arguments.image; }

    const CaptureStep* step;
    CallKind kind;
    std::optional<view::Finding> useless;  // why it has no effect whatever it meets
    Look before;
    std::optional<std::string> answer;  // of the service
    bool serviceThrew = false;
    bool isReported = false;              // a flush
    std::vector<view::Report> requested;  // of a request
};

// The calling thread is inside of the call, and may be inside of others around it.
class CaptureObserver::Observation {
  public:
    Observation(CaptureObserver& observer, const CaptureStep& step)
        : owner(observer), call(step), lock(observer.mMutex, std::defer_lock), mOuter(innermost) {
        innermost = this;
    }
    ~Observation() { innermost = mOuter; }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;

    static Observation* current() { return innermost; }

    CaptureObserver& owner;
    ObservedCall call;
    std::unique_lock<std::mutex> lock;  // from when on nobody else can change what the call meets
    view::Report report;                // that the service is receiving

  private:
    static thread_local Observation* innermost;

    Observation* const mOuter;
};

}  // namespace replay
