// Whether to record, where to, and how much.

#pragma once

#include <cstdint>
#include <string>

namespace recording {

// Each comes from the environment or, if that does not have it, from a property:
//     INFOSYNC_RECORD          debug.infosync.record          the folder
//     INFOSYNC_RECORD_PROCESS  debug.infosync.record.process  the only process that records
//     INFOSYNC_RECORD_LIMIT    debug.infosync.record.limit    bytes of all files together
struct Settings {
    std::string folder;   // absolute; empty: nothing is recorded
    std::string process;  // this one's name
    uint64_t limit = 0;

    // A limit that is no number, or too small, is logged as a warning and otherwise ignored.
    static Settings read();
};

}  // namespace recording
