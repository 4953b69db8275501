// Writes out what the service received.

#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <vector>

#include "OverlapService.h"

namespace camInfosync {
class InfoSynchronizerManager;
}  // namespace camInfosync

namespace replay {

// Takes the calls from the stand-in service and writes each one as a line of JSON, and each
// report, which its closing call completes, in a readable form.
//
// Thread safety: drain may be called from any thread; the rest once no drain is running.
class ServiceReport {
  public:
    // Null leaves a form out; without `take` there is no service. The files must outlive this.
    ServiceReport(TakeServiceCalls* take, std::FILE* json, std::FILE* readable)
        : mTake(take), mJson(json), mReadable(readable) {}

    // Writes out what came since the last time. To be called after each flush, on its thread,
    // so that the record still is as it was reported.
    void drain(camInfosync::InfoSynchronizerManager& manager);

    uint64_t calls() const { return mCalls; }
    uint64_t reports() const { return mReports; }

  private:
    void add(ServiceCall call, camInfosync::InfoSynchronizerManager& manager);

    TakeServiceCalls* const mTake;
    std::FILE* const mJson;
    std::FILE* const mReadable;
    std::mutex mMutex;
    std::vector<ServiceCall> mTaken;    // guarded by mMutex; kept for its memory
    std::vector<ServiceCall> mCurrent;  // guarded by mMutex: the report that is not yet closed
    uint64_t mCalls = 0;                // guarded by mMutex
    uint64_t mReports = 0;              // guarded by mMutex
};

}  // namespace replay
