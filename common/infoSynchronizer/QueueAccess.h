// What the record operations do with a queue whose mutex they hold, and how they count without it.

#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "RequestRecord.h"
#include "RequestRecordQueue.h"
#include "ThreadAnnotations.h"

namespace camInfosync {

// The record that was registered under `imageName`, or null.
inline RequestRecord* lookUp(RequestRecordQueue& queue, const std::string& imageName)
        INFOSYNC_REQUIRES(queue.mutex) {
    const auto position = queue.records.find(imageName);
    return position != queue.records.end() ? position->second.get() : nullptr;
}

// As "%lu" prints it.
inline unsigned long countRecords(const RequestRecordQueue& queue) INFOSYNC_REQUIRES(queue.mutex) {
    return queue.records.size();
}

// The same for who does not hold the mutex; without a queue there are none.
inline unsigned long lockAndCount(const std::shared_ptr<RequestRecordQueue>& queue) {
    if (queue == nullptr) {
        return 0;
    }
    std::lock_guard<std::mutex> lock(queue->mutex);
    return countRecords(*queue);
}

// Marks a snapshot as failed in the three places that failures are listed in. The flag comes first,
// so that it is set even if memory ends here.
template <typename Name>
void markFailed(RequestRecordQueue& queue, RequestRecord& record, Name&& imageName,
                const char* text) INFOSYNC_REQUIRES(queue.mutex) {
    record.hasError = true;
    queue.errorImageNames.emplace_back(std::forward<Name>(imageName));
    record.errorInfo.emplace_back(text);
}

}  // namespace camInfosync
