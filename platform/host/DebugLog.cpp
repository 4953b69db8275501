// The debug log, on standard error. The environment sets its gates while it is being loaded:
// INFOSYNC_LOG_LEVEL, INFOSYNC_LOG_GROUP and INFOSYNC_DEBUG_MASK.

#include <zudebug/Log.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// The number in a variable of the environment; `fallback` if it is unset or no such number.
long long numberFrom(const char* variable, long long fallback, long long least, long long most) {
    const char* text = std::getenv(variable);
    if (text == nullptr) {
        return fallback;
    }
    char* end = nullptr;
    errno = 0;
    const long long number = std::strtoll(text, &end, 0);
    if (end == text || *end != '\0' || errno != 0 || number < least || number > most) {
        std::fprintf(stderr, "%s: \"%s\" is no number from %lld to %lld; taking %lld\n", variable,
                     text, least, most, fallback);
        return fallback;
    }
    return number;
}

}  // namespace

namespace zudebug {

// Warnings of all groups to the Android log, nothing to the debug log.
int32_t gZuCamLogLevel =
        static_cast<int32_t>(numberFrom("INFOSYNC_LOG_LEVEL", 5, INT32_MIN, INT32_MAX));
uint32_t gZuCamLogGroup =
        static_cast<uint32_t>(numberFrom("INFOSYNC_LOG_GROUP", UINT32_MAX, 0, UINT32_MAX));
uint32_t gZuCamDebugMask =
        static_cast<uint32_t>(numberFrom("INFOSYNC_DEBUG_MASK", 0, 0, UINT32_MAX));

const char* Log::zuaGroupToString(uint32_t group) {
    return group == 64 ? "INFOSYNC" : "OTHER";
}

const char* Log::getFileName(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

void Log::logSystem(uint32_t group, const char* level, const char* fileName,
                    const char* functionName, int32_t line, const char* message, ...) {
    va_list arguments;
    va_start(arguments, message);
    va_list again;
    va_copy(again, arguments);
    std::string text(static_cast<size_t>(std::max(std::vsnprintf(nullptr, 0, message, again), 0)),
                     '\0');
    va_end(again);
    std::vsnprintf(text.data(), text.size() + 1, message, arguments);
    va_end(arguments);
    // One call, so that lines of several threads do not mix.
    std::fprintf(stderr, "%s %s %s:%d %s() %s\n", level, zuaGroupToString(group), fileName, line,
                 functionName, text.c_str());
}

}  // namespace zudebug
