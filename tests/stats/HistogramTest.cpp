#include "Histogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace stats {
namespace {

Histogram histogramOf(const std::vector<int64_t>& values) {
    Histogram histogram;
    for (const int64_t value : values) {
        histogram.add(value);
    }
    return histogram;
}

// The smallest value that so many percent of all do not exceed.
int64_t exactPercentile(std::vector<int64_t> values, uint32_t percent) {
    std::sort(values.begin(), values.end());
    const double rank = std::ceil(static_cast<double>(values.size()) * percent / 100);
    return values[static_cast<size_t>(rank) - 1];
}

TEST(Histogram, TellsPercentilesWithinTheirError) {
    std::mt19937_64 random(1);
    std::lognormal_distribution<> times(10, 2);
    const std::vector<std::function<int64_t()>> makers = {
            [&] { return static_cast<int64_t>(times(random)); },
            [&] { return static_cast<int64_t>(random() % 300) - 150; },
            [&] { return -static_cast<int64_t>(times(random)); },
            [&] { return static_cast<int64_t>(random()); },
    };
    for (size_t maker = 0; maker < makers.size(); ++maker) {
        std::vector<int64_t> values(5000);
        std::generate(values.begin(), values.end(), makers[maker]);
        const Histogram histogram = histogramOf(values);
        EXPECT_EQ(*std::min_element(values.begin(), values.end()), histogram.minimum());
        EXPECT_EQ(*std::max_element(values.begin(), values.end()), histogram.maximum());
        for (uint32_t percent = 1; percent <= 100; ++percent) {
            const auto exact = static_cast<double>(exactPercentile(values, percent));
            const auto told = static_cast<double>(histogram.percentile(percent));
            EXPECT_LE(std::abs(told - exact), std::abs(exact) / 128) << maker << ' ' << percent;
        }
    }
}

TEST(Histogram, IsExactBelow128) {
    std::vector<int64_t> values(256);
    std::iota(values.begin(), values.end(), -128);
    const Histogram histogram = histogramOf(values);
    for (uint32_t percent = 1; percent <= 100; ++percent) {
        EXPECT_EQ(exactPercentile(values, percent), histogram.percentile(percent)) << percent;
    }
}

TEST(Histogram, TakesTheRankThatManyDoNotExceed) {
    const Histogram ten = histogramOf({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_EQ(5, ten.percentile(50));
    EXPECT_EQ(9, ten.percentile(90));
    EXPECT_EQ(10, ten.percentile(91));
    EXPECT_EQ(1, ten.percentile(1));
    EXPECT_EQ(7, histogramOf({7}).percentile(99));
}

TEST(Histogram, TakesAnyNumber) {
    constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();
    constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
    const Histogram ends = histogramOf({kMost, kLeast, 1'000'003});
    EXPECT_EQ(kLeast, ends.percentile(1));
    EXPECT_NEAR(1'000'003, ends.percentile(50), 1'000'003.0 / 128);
    EXPECT_EQ(kMost, ends.percentile(100));
    EXPECT_EQ(1'000'003, histogramOf({1'000'003, 1'000'003, 1'000'003}).percentile(50));
}

}  // namespace
}  // namespace stats
