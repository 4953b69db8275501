// The store of the snapshots that are in flight.

#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Export.h"
#include "RequestRecord.h"
#include "ThreadAnnotations.h"

namespace camInfosync {

// Records by image name. There is no limit and no eviction: a record stays until it is removed.
//
// Thread safety: `mutex` guards the three containers and the contents of every record reached
// through them. It is not recursive. A shared pointer keeps a record alive outside the lock,
// but does not allow to read or write it there.
class INFOSYNC_EXPORT RequestRecordQueue {
  public:
    // Sees one record; returns whether to go on to the next.
    using Visitor = std::function<bool(std::shared_ptr<RequestRecord>)>;

    RequestRecordQueue();
    ~RequestRecordQueue();
    RequestRecordQueue(const RequestRecordQueue&) = delete;
    RequestRecordQueue& operator=(const RequestRecordQueue&) = delete;

    // Adds a record unless one exists under `imageName`; an existing record is left as it is
    // and a warning is logged. std::bad_alloc passes, with the queue unchanged.
    void emplace_back(std::string imageName) INFOSYNC_EXCLUDES(mutex);

    // Drops the queue's reference to the record; an unknown name is logged as a warning.
    void remove(std::string imageName) INFOSYNC_EXCLUDES(mutex);

    // Calls `visit` for each record whose frameInfo.imageName equals `imageName`, in key order,
    // until it returns false. The keys themselves are not compared: a record that has not had
    // its updateFrameInfo is found by the empty name only. `visit` runs under `mutex`: it must
    // neither take it nor change `records`. What it throws passes; an empty `visit` throws
    // std::bad_function_call at the first match.
    void findByImageName(std::string imageName, Visitor visit) INFOSYNC_REQUIRES(mutex);

    // Not per snapshot; replaced as a whole.
    std::map<std::string, uint32_t> postProcInfo INFOSYNC_GUARDED_BY(mutex);
    // One entry per reported vendor or node error, duplicates included. The library only appends:
    // whoever reads the names clears them, with `mutex` held, or they grow for ever.
    std::vector<std::string> errorImageNames INFOSYNC_GUARDED_BY(mutex);
    std::map<std::string, std::shared_ptr<RequestRecord>> records INFOSYNC_GUARDED_BY(mutex);
    std::mutex mutex;
    std::condition_variable recordCond;  // nothing waits on it or signals it
    const RequestType defaultRequestType = REQUEST_TYPE_DEFAULT;
};

}  // namespace camInfosync
