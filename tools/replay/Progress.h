// A bar on standard error for runs that take a while.

#pragma once

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace replay {

// Draws nothing in the first second, nor if it is not wanted or standard error is no terminal.
class Progress {
  public:
    Progress(bool wanted, uint64_t total)
        : mTotal(total), mShown(wanted && total != 0 && isatty(STDERR_FILENO) != 0) {}
    ~Progress() {
        if (mDrawn) {
            std::fputs("\r\033[K", stderr);
        }
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(uint64_t done) {
        constexpr uint32_t kCallsPerLook = 256;
        if (!mShown || ++mCalls % kCallsPerLook != 0 || Clock::now() < mNext) {
            return;
        }
        mNext = Clock::now() + std::chrono::milliseconds(100);
        mDrawn = true;
        done = std::min(done, mTotal);  // the log may have grown
        constexpr uint64_t kWidth = 40;
        const uint64_t filled = done * kWidth / mTotal;
        const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
        std::fprintf(stderr, "\r[%s] %3d%%", bar.c_str(), static_cast<int>(done * 100 / mTotal));
    }

  private:
    using Clock = std::chrono::steady_clock;

    const uint64_t mTotal;
    const bool mShown;
    bool mDrawn = false;
    uint32_t mCalls = 0;
    Clock::time_point mNext = Clock::now() + std::chrono::seconds(1);
};

}  // namespace replay
