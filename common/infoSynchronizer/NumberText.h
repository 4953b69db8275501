// Numbers as the report writes them.

#pragma once

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace camInfosync {

// The decimal text of a number. Needs no memory of its own.
class NumberText {
  public:
    template <typename Integer>
    explicit NumberText(Integer value) : mEnd(put(mText, value)) {}

    // As printf's %f, and quicker. Not by std::to_chars, which the phone's C++ library may lack for
    // floating point. The millionths of a float are exact in a double, so that rounding them once
    // gives what printf gives.
    explicit NumberText(float value) : mEnd(mText) {
        constexpr double kMostMillionths = 1e18;  // well within a long long
        const double millionths = std::fabs(static_cast<double>(value) * 1e6);
        if (!(millionths < kMostMillionths)) {  // written so that NaN is among them
            mEnd += snprintf(mText, sizeof(mText), "%f", static_cast<double>(value));
            return;
        }
        if (std::signbit(value)) {
            *mEnd++ = '-';
        }
        const long long rounded = std::llrint(millionths);
        char* const whole = put(mEnd, rounded / kMillion);
        // With a leading 1, so that zeros after the point are written; the point replaces the 1.
        mEnd = put(whole, kMillion + rounded % kMillion);
        *whole = '.';
    }

    std::string_view text() const { return {mText, static_cast<size_t>(mEnd - mText)}; }

  private:
    static constexpr long long kMillion = 1000000;

    template <typename Integer>
    char* put(char* begin, Integer value) {
        return std::to_chars(begin, mText + sizeof(mText), value).ptr;
    }

    char mText[64];  // the longest float has 47 characters
    char* mEnd;
};

}  // namespace camInfosync
