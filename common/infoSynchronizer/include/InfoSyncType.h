// Names the synchronizers of a manager.

#pragma once

#include <cstdint>

namespace camInfosync {

// Selects the synchronizer that a request goes to.
enum InfoSyncType : int32_t {
    INFO_SYNC_TYPE_COLLECT = 0,      // an InfoCollector; the one that a flush reports through
    INFO_SYNC_TYPE_CMD = 1,          // a CmdExecutor
    INFO_SYNC_TYPE_COLLECT_ALT = 2,  // a second, independent InfoCollector
    INFO_SYNC_TYPE_MAX = 3,          // number of synchronizers; not a synchronizer itself
};

}  // namespace camInfosync
