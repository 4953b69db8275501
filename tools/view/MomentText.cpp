#include "MomentText.h"

#include <time.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "Finding.h"
#include "TerminalText.h"
#include "View.h"

namespace view {
namespace {

constexpr int64_t kNsPerSecond = 1'000'000'000;
constexpr int64_t kNsPerMs = 1'000'000;

struct Parts {
    int64_t seconds;
    int ms;
};

Parts partsOf(int64_t at) {
    const int64_t rest = ((at % kNsPerSecond) + kNsPerSecond) % kNsPerSecond;
    return {at / kNsPerSecond - (at % kNsPerSecond < 0 ? 1 : 0), static_cast<int>(rest / kNsPerMs)};
}

std::string calendarText(int64_t at) {
    const Parts parts = partsOf(at);
    const time_t seconds = parts.seconds;
    tm calendar{};
    char date[40];
    char text[60];
    gmtime_r(&seconds, &calendar);
    strftime(date, sizeof(date), "%Y-%m-%d %H:%M:%S", &calendar);
    std::snprintf(text, sizeof(text), "at %s.%03d UTC", date, parts.ms);
    return text;
}

}  // namespace

// A sum that cannot be said is no time.
Time realTime(Time at, const Session& session) {
    int64_t sum = 0;
    if (!at || session.clock == Clock::kReal) {
        return at;
    }
    const bool known = session.clock == Clock::kMonotonic && session.toReal &&
                       !__builtin_add_overflow(*at, *session.toReal, &sum);
    return known ? Time(sum) : std::nullopt;
}

std::string momentText(Time at, const Session& session) {
    if (!at || session.clock == Clock::kNone) {
        return "";
    }
    if (const Time real = realTime(at, session)) {
        return calendarText(*real);
    }
    const Parts parts = partsOf(*at);
    char text[60];
    std::snprintf(text, sizeof(text), "at %lld.%03d s since the start",
                  static_cast<long long>(parts.seconds), parts.ms);
    return text;
}

std::string afterText(Time from, Time to) {
    return from && to
                   ? " after " +
                             milliseconds((static_cast<double>(*to) - static_cast<double>(*from)) /
                                          static_cast<double>(kNsPerMs)) +
                             " ms"
                   : "";
}

}  // namespace view
