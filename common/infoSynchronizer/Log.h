// Log lines to the Android log and to the platform's debug log.
//
// Both are called with the mutexes held that the caller of a message holds: a log must call nothing
// of this library.
//
// A source file names its Android tag: constexpr char kLogTag[] = "...";

#pragma once

#include <cstdint>

#include <android/log.h>
#include <zudebug/Log.h>

#include "LogSites.h"

namespace camInfosync::logging {

inline constexpr uint32_t kGroup = 64;  // the mask value of this module

inline bool toAndroid(int priority) {
    return zudebug::gZuCamLogLevel <= priority && (zudebug::gZuCamLogGroup & kGroup) != 0;
}

inline bool toSystem() {
    return (zudebug::gZuCamLogGroup & kGroup) != 0 && zudebug::gZuCamDebugMask != 0;
}

// Whether either log is open: for arguments that must be the same in both.
inline bool isOpen(int priority) {
    return toAndroid(priority) || toSystem();
}

}  // namespace camInfosync::logging

// Logs to each sink whose gate is open. The arguments are evaluated once per open sink, and
// not at all while both are shut. `message` must be a literal.
#define INFOSYNC_LOG(priority, level, site, message, ...)                                          \
    do {                                                                                           \
        if (::camInfosync::logging::toAndroid(priority)) {                                         \
            __android_log_print(priority, kLogTag, "%s %s:%d %s()" message,                        \
                                zudebug::Log::zuaGroupToString(::camInfosync::logging::kGroup),    \
                                zudebug::Log::getFileName(__FILE__), (site).line, (site).function, \
                                ##__VA_ARGS__);                                                    \
        }                                                                                          \
        if (::camInfosync::logging::toSystem()) {                                                  \
            zudebug::Log::logSystem(::camInfosync::logging::kGroup, level,                         \
                                    zudebug::Log::getFileName(__FILE__), (site).function,          \
                                    (site).line, message, ##__VA_ARGS__);                          \
        }                                                                                          \
    } while (false)

#define INFOSYNC_LOGI(site, ...) INFOSYNC_LOG(ANDROID_LOG_INFO, "I", site, __VA_ARGS__)
#define INFOSYNC_LOGW(site, ...) INFOSYNC_LOG(ANDROID_LOG_WARN, "W", site, __VA_ARGS__)
