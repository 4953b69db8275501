// What each message prints as its origin.
//
// Deliberate: these are not __func__ and __LINE__. Whoever reads the logs knows a message by
// its function and line. Code may move; a message's origin may not.

#pragma once

#include <cstdint>

namespace camInfosync::site {

struct LogSite {
    const char* function;
    int32_t line;
};

inline constexpr LogSite kSynchronizerConstruct{"InfoSynchronizer", 12};
inline constexpr LogSite kPoolPileUp{"enqueue", 92};
inline constexpr LogSite kConstructEnter{"InfoSynchronizerManager", 25};
inline constexpr LogSite kConstructExit{"InfoSynchronizerManager", 48};
inline constexpr LogSite kFlushSwitch{"snapshotRequestInfoFlush", 124};
inline constexpr LogSite kFlushDone{"snapshotRequestInfoFlush", 139};
inline constexpr LogSite kNodeProcTime{"updateNodeProcTime", 334};
inline constexpr LogSite kStageUnknown{"updateSnapshotTimeInfo", 473};
inline constexpr LogSite kTimeMapStored{"updateSnapshotTimeInfo", 493};
inline constexpr LogSite kTimeMapUnknown{"updateSnapshotTimeInfo", 497};
inline constexpr LogSite kSubmitEvent{"requestInfo", 21};
inline constexpr LogSite kStartEvent{"requestInfo", 56};
inline constexpr LogSite kCompletionEvent{"requestInfo", 72};

}  // namespace camInfosync::site

// The origin of a message without a fixed line: the public operation that owns the message,
// which need not be the function that logs it, and the true line.
#define INFOSYNC_HERE(function) (::camInfosync::site::LogSite{function, __LINE__})
