// Writes out what the service received.

#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <vector>

#include "OverlapService.h"

namespace replay {

// Takes the calls from the stand-in service and writes each one as a line of JSON, followed by the
// note that it has, and counts them.
//
// Thread safety: drain may be called from any thread; the rest once no drain is running.
class ServiceReport {
  public:
    // Without `take` there is no service; a null file is left out, and otherwise must outlive this.
    ServiceReport(TakeServiceCalls* take, std::FILE* json) : mTake(take), mJson(json) {}

    // Writes out what came since the last time. To be called after each flush.
    void drain();

    uint64_t calls() const { return mCalls; }
    uint64_t reports() const { return mReports; }

  private:
    void add(const ServiceCall& call);

    TakeServiceCalls* const mTake;
    std::FILE* const mJson;
    std::mutex mMutex;
    std::vector<ServiceCall> mTaken;  // guarded by mMutex; kept for its memory
    uint64_t mCalls = 0;              // guarded by mMutex
    uint64_t mReports = 0;            // guarded by mMutex
};

}  // namespace replay
