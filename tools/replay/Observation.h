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

namespace replay {

// The calling thread is inside of it, and may be inside of others around it.
class CaptureObserver::Observation {
  public:
    Observation(CaptureObserver& observer, const CaptureStep& observed)
        : owner(observer),
          step(observed),
          kind(kindOf(observed)),
          useless(uselessCall(step, kind)),
          lock(observer.mMutex, std::defer_lock),
          mOuter(innermost) {
        innermost = this;
    }
    ~Observation() { innermost = mOuter; }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;

    static Observation* current() { return innermost; }

    CaptureObserver& owner;
    const CaptureStep& step;
    const CallKind kind;
    std::optional<view::Finding> useless;  // why the call has no effect whatever it meets
    std::unique_lock<std::mutex> lock;  // from when on nobody else can change what the call meets
    Look before;
    std::optional<std::string> answer;  // of the service
    bool serviceThrew = false;
    view::Report report;  // what the service has received of the one that it is receiving
    bool isReported = false;
    std::vector<view::Report> requested;  // of a request

  private:
    static thread_local Observation* innermost;

    Observation* const mOuter;
};

}  // namespace replay
