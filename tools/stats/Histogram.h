// Counts durations, so that their percentiles can be told.

#pragma once

#include <array>
#include <cstdint>
#include <map>

namespace stats {

// The scheme of HDR histograms: each power of two is divided into 64 ranges of one width, so that
// a range is never wider than 1/64 of its values. A percentile is the middle of its range, so it
// is off by 1/128 of itself, 0.8 %, at most; numbers below 128, and the first and last, are exact.
//
// Takes any 64-bit number. Memory depends on the powers of two that occur, not on the number of
// values, and the order of the values makes no difference.
class Histogram {
  public:
    void add(int64_t value);

    uint64_t count() const { return mCount; }
    // Of at least one value:
    int64_t minimum() const { return mMinimum; }
    int64_t maximum() const { return mMaximum; }
    // The smallest value that at least that many percent of all values do not exceed: of 10 values
    // the 9th for 90 %, the 10th for 91 %. `percent` is 1 to 100.
    int64_t percentile(uint32_t percent) const;

  private:
    static constexpr int64_t kRanges = 64;
    using Page = std::array<uint64_t, kRanges>;

    uint64_t mCount = 0;
    int64_t mMinimum = 0;
    int64_t mMaximum = 0;
    std::map<int64_t, Page> mPages;  // what has been counted, a page for each power of two
};

}  // namespace stats
