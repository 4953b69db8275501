// The synchronizer that reports a snapshot to the intent-aware object.

#pragma once

#include "Export.h"
#include "InfoSyncType.h"
#include "InfoSynchronizer.h"

namespace camInfosync {

// Turns one snapshot's record into the outgoing report. Keeps nothing between calls.
class INFOSYNC_EXPORT InfoCollector : public InfoSynchronizer {
  public:
    // The type is accepted for symmetry with the other synchronizers and not kept.
    explicit InfoCollector(InfoSyncType type);
    ~InfoCollector() override;

    // `in` is the address of a RequestRecord, which is copied first and never changed. Sends
    // eight parameters, the submit event, the events of each node and a closing call, all from
    // the calling thread and in this order. Without an intent-aware object the report is only
    // logged. A null record is logged as a warning and otherwise ignored.
    //
    // Takes no lock: the record must not change until the call returns, and two reports on two
    // threads may interleave their calls. What the intent-aware object throws, and
    // std::bad_alloc, pass through; the calls already made stay made.
    void requestInfo(const void* in) override;
};

}  // namespace camInfosync
