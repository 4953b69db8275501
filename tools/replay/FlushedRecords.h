// What is noted of records while the library reports them.

#pragma once

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "CaptureContent.h"
#include "RequestRecord.h"
#include "TrackedCapture.h"

namespace replay {

// Thread safety: any thread, at any time. Nothing waits within it, so that the library may hold its
// own mutex.
class FlushedRecords {
  public:
    using Record = camInfosync::RequestRecord;

    void add(const Record* record, ReportedRecord report) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mReports[record].push_back(std::move(report));
    }
    // The reports since the last time.
    std::vector<ReportedRecord> take(const Record* record) {
        const std::lock_guard<std::mutex> lock(mMutex);
        const auto reports = mReports.extract(record);
        return reports.empty() ? std::vector<ReportedRecord>() : std::move(reports.mapped());
    }

    void setDeskTimes(const Record* record, const DeskTimes& times) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mDeskTimes[record] = times;
    }
    // All are the desk's of a record that nothing is known of.
    DeskTimes deskTimes(const Record* record) const {
        const std::lock_guard<std::mutex> lock(mMutex);
        const auto times = mDeskTimes.find(record);
        return times != mDeskTimes.end() ? times->second : DeskTimes();
    }

    void forget(const Record* record) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mDeskTimes.erase(record);
        mReports.erase(record);
    }

  private:
    mutable std::mutex mMutex;
    std::map<const Record*, std::vector<ReportedRecord>> mReports;  // guarded by mMutex
    std::map<const Record*, DeskTimes> mDeskTimes;                  // guarded by mMutex
};

}  // namespace replay
