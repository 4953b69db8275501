// Finds the few lines that matter among the many of a log.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Input.h"

namespace logcat {

struct Line {
    std::string_view text;  // without its newline
    uint64_t number;        // from 1
};

// Needs the same memory for every log. A line of more than kLongestLine bytes is passed over; the
// logger writes none of a tenth of that.
class LineScanner {
  public:
    static constexpr size_t kLongestLine = size_t{1} << 18;

    // `needles` are not empty, and must outlive the scanner.
    LineScanner(Input& input, std::vector<std::string_view> needles);

    // Goes on to the next line, or to the next one that holds a needle. False at the end. The text
    // lasts until the next call. Both throw what the input throws.
    bool next(Line& line);
    bool nextWithNeedle(Line& line);

  private:
    struct Needle {
        std::string_view text;
        size_t position = 0;  // in mBuffer: there is none from mBegin to here
    };

    void fill();
    void readOn();
    bool takeLine(Line& line, bool& isTooLong);
    size_t endOfWholeLines() const;
    size_t findNeedle(size_t end);
    void passOver(size_t end);

    Input& mInput;
    std::vector<Needle> mNeedles;
    std::vector<char> mBuffer;
    size_t mBegin = 0;  // of the next line
    size_t mEnd = 0;
    uint64_t mLineNumber = 0;  // of the last line
    bool mIsTooLong = false;   // what is at mBegin belongs to a line that is passed over
    bool mAtEnd = false;
};

}  // namespace logcat
