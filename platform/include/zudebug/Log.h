// The platform's debug log.

#pragma once

#include <cstdint>

namespace zudebug {

extern int32_t gZuCamLogLevel;    // lowest Android priority that is printed
extern uint32_t gZuCamLogGroup;   // mask of the module groups that may log at all
extern uint32_t gZuCamDebugMask;  // 0 switches the debug log off

class Log {
  public:
    // The name of a module group; never null.
    static const char* zuaGroupToString(uint32_t group);

    // The part of `path` after its last slash.
    static const char* getFileName(const char* path);

    // Writes one line to the debug log; `message` is a printf format.
    static void logSystem(uint32_t group, const char* level, const char* fileName,
                          const char* functionName, int32_t line, const char* message, ...)
            __attribute__((format(printf, 6, 7)));
};

}  // namespace zudebug
