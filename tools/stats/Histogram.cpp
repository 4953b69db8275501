#include "Histogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace stats {
namespace {

constexpr int64_t kRangesPerPower = 64;
constexpr int kBitsOfRange = 6;

// The ranges in the order of their values. Numbers below 128 have one each.
int64_t rangeOfPositive(int64_t value) {
    int shift = 0;
    while ((value >> shift) >= 2 * kRangesPerPower) {
        ++shift;
    }
    return shift * kRangesPerPower + (value >> shift);
}

int64_t middleOfPositive(int64_t range) {
    if (range < 2 * kRangesPerPower) {
        return range;
    }
    const int64_t shift = range / kRangesPerPower - 1;
    const int64_t first = (range - shift * kRangesPerPower) << shift;
    return first + (int64_t{1} << (shift - 1));
}

// Negative numbers have the ranges of -1 - number in the opposite order, before those of 0.
int64_t rangeOf(int64_t value) {
    return value >= 0 ? rangeOfPositive(value) : ~rangeOfPositive(~value);
}

int64_t middleOf(int64_t range) {
    return range >= 0 ? middleOfPositive(range) : ~middleOfPositive(~range);
}

// The quotient rounded towards minus infinity, and what is left.
int64_t pageOf(int64_t range) {
    return range >= 0 ? range >> kBitsOfRange : ~(~range >> kBitsOfRange);
}

}  // namespace

void Histogram::add(int64_t value) {
    mMinimum = mCount == 0 ? value : std::min(mMinimum, value);
    mMaximum = mCount == 0 ? value : std::max(mMaximum, value);
    ++mCount;
    const int64_t range = rangeOf(value);
    const int64_t page = pageOf(range);
    ++mPages[page][static_cast<size_t>(range - page * kRanges)];
}

int64_t Histogram::percentile(uint32_t percent) const {
    // percent * mCount / 100 rounded up, where the product may not fit.
    const uint64_t rank = mCount / 100 * percent + (mCount % 100 * percent + 99) / 100;
    if (rank <= 1 || rank == mCount) {
        return rank <= 1 ? mMinimum : mMaximum;
    }
    uint64_t passed = 0;
    for (const auto& [number, page] : mPages) {
        for (size_t i = 0; i < page.size(); ++i) {
            passed += page[i];
            if (passed >= rank) {
                const int64_t middle = middleOf(number * kRanges + static_cast<int64_t>(i));
                return std::clamp(middle, mMinimum, mMaximum);
            }
        }
    }
    return mMaximum;
}

}  // namespace stats
