#include "Pace.h"

#include <time.h>

#include <cerrno>
#include <cstdint>

namespace replay {
namespace {

constexpr uint64_t kNanoseconds = 1'000'000'000;

uint64_t monotonic() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<uint64_t>(time.tv_sec) * kNanoseconds + static_cast<uint64_t>(time.tv_nsec);
}

}  // namespace

void Pace::keep(uint64_t at) {
    if (!mStart) {
        mStart = {at, monotonic()};
    }
    if (at <= mStart->recorded) {
        return;
    }
    const uint64_t until = mStart->now + (at - mStart->recorded);
    const timespec time{static_cast<time_t>(until / kNanoseconds),
                        static_cast<long>(until % kNanoseconds)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
    }
}

}  // namespace replay
