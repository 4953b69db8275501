#include "ServiceReport.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "OverlapService.h"

namespace {

std::atomic<int> gInside{0};

void take(std::vector<ServiceCall>* calls) {
    EXPECT_EQ(1, ++gInside);
    std::this_thread::yield();
    calls->push_back({ServiceCall::Kind::kFinishReport, "A", {}, {}, 0, 0, {}});
    --gInside;
}

TEST(ServiceReport, TakesFromTheServiceOnOneThreadAtATime) {
    constexpr int kDrains = 2000;
    replay::ServiceReport report(take, nullptr);
    const auto drain = [&] {
        for (int i = 0; i < kDrains; ++i) {
            report.drain();
        }
    };
    std::thread other(drain);
    drain();
    other.join();
    EXPECT_EQ(2 * kDrains, static_cast<int>(report.reports()));
}

}  // namespace
