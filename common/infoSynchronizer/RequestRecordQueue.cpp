#include "RequestRecordQueue.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Log.h"
#include "LogSites.h"
#include "RequestRecord.h"

namespace camInfosync {
namespace {

constexpr char kLogTag[] = "ZuAlgoEngine";

}  // namespace

RequestRecordQueue::RequestRecordQueue() = default;
RequestRecordQueue::~RequestRecordQueue() = default;

void RequestRecordQueue::emplace_back(std::string imageName) {
    std::lock_guard<std::mutex> lock(mutex);
    auto position = records.lower_bound(imageName);
    if (position != records.end() && position->first == imageName) {
        // Deliberate: "imageNmae" is how the message is known, here and below.
        INFOSYNC_LOGW(INFOSYNC_HERE("emplace_back"),
                      "imageNmae %s had exist in snapshot requestRecord queue, pl check it!",
                      imageName.c_str());
        return;
    }
    auto record = std::make_shared<RequestRecord>(defaultRequestType);
    records.emplace_hint(position, std::move(imageName), std::move(record));
}

void RequestRecordQueue::remove(std::string imageName) {
    decltype(records)::node_type removed;  // dies after the lock, and the record with it
    std::lock_guard<std::mutex> lock(mutex);
    auto position = records.find(imageName);
    if (position == records.end()) {
        // Deliberate: two blanks before "in".
        INFOSYNC_LOGW(INFOSYNC_HERE("remove"),
                      "can't find imageNmae %s  in snapshot requestRecord queue!",
                      imageName.c_str());
        return;
    }
    removed = records.extract(position);
}

void RequestRecordQueue::findByImageName(std::string imageName, Visitor visit) {
    for (const auto& [key, record] : records) {
        if (record->frameInfo.imageName == imageName && !visit(record)) {
            return;
        }
    }
}

}  // namespace camInfosync
