#include "LineScanner.h"

#include <string.h>  // memmem, memrchr

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "Input.h"

namespace logcat {
namespace {

// The buffer grows with the log.
constexpr size_t kSmallestBuffer = size_t{1} << 14;
constexpr size_t kLargestBuffer = size_t{1} << 20;
static_assert(LineScanner::kLongestLine < kLargestBuffer);

}  // namespace

LineScanner::LineScanner(Input& input, std::vector<std::string_view> needles)
    : mInput(input), mBuffer(kSmallestBuffer) {
    for (const std::string_view needle : needles) {
        mNeedles.push_back({needle});
    }
}

// Reads until the buffer is full or the input ends. What is left of it moves to the front.
void LineScanner::fill() {
    std::memmove(mBuffer.data(), mBuffer.data() + mBegin, mEnd - mBegin);
    const bool wasFull = mEnd == mBuffer.size();
    mEnd -= mBegin;
    mBegin = 0;
    if (wasFull && mBuffer.size() < kLargestBuffer) {
        mBuffer.resize(mBuffer.size() * 2);
    }
    for (Needle& needle : mNeedles) {
        needle.position = 0;
    }
    while (!mAtEnd && mEnd < mBuffer.size()) {
        const size_t length = mInput.read(mBuffer.data() + mEnd, mBuffer.size() - mEnd);
        mEnd += length;
        mAtEnd = length == 0;
    }
}

// Where the last line ends that is whole; at the end of the input, every line is.
size_t LineScanner::endOfWholeLines() const {
    if (mAtEnd) {
        return mEnd;
    }
    const char* begin = mBuffer.data() + mBegin;
    const auto* newline = static_cast<const char*>(memrchr(begin, '\n', mEnd - mBegin));
    return newline != nullptr ? mBegin + static_cast<size_t>(newline - begin) + 1 : mBegin;
}

// The first needle from mBegin to `end`; `end` if there is none.
size_t LineScanner::findNeedle(size_t end) {
    size_t first = end;
    for (Needle& needle : mNeedles) {
        if (needle.position < mBegin || needle.position == 0) {
            const char* begin = mBuffer.data() + mBegin;
            const auto* found = static_cast<const char*>(
                    memmem(begin, end - mBegin, needle.text.data(), needle.text.size()));
            needle.position = found != nullptr ? mBegin + static_cast<size_t>(found - begin) : end;
        }
        first = std::min(first, needle.position);
    }
    return first;
}

// Counts the lines up to `end`, where one begins.
void LineScanner::passOver(size_t end) {
    mLineNumber +=
            static_cast<uint64_t>(std::count(mBuffer.data() + mBegin, mBuffer.data() + end, '\n'));
    mBegin = end;
}

// What is in the buffer has no end of a line: reads on, if need be without its beginning.
void LineScanner::readOn() {
    if (mEnd - mBegin == kLargestBuffer) {
        mIsTooLong = true;
        mBegin = mEnd;
    }
    fill();
}

// The next line, of whatever length.
bool LineScanner::takeLine(Line& line, bool& isTooLong) {
    while (true) {
        const char* begin = mBuffer.data() + mBegin;
        const auto* newline = static_cast<const char*>(std::memchr(begin, '\n', mEnd - mBegin));
        if (newline == nullptr && !mAtEnd) {
            readOn();
            continue;
        }
        if (mBegin == mEnd) {
            return false;
        }
        const size_t length =
                newline != nullptr ? static_cast<size_t>(newline - begin) : mEnd - mBegin;
        line = {std::string_view(begin, length), ++mLineNumber};
        mBegin += length + (newline != nullptr ? 1 : 0);
        isTooLong = std::exchange(mIsTooLong, false) || length > kLongestLine;
        return true;
    }
}

bool LineScanner::next(Line& line) {
    bool isTooLong = true;
    while (isTooLong) {
        if (!takeLine(line, isTooLong)) {
            return false;
        }
    }
    return true;
}

bool LineScanner::nextWithNeedle(Line& line) {
    while (true) {
        const size_t end = endOfWholeLines();
        const size_t hit = mIsTooLong ? mBegin : findNeedle(end);
        if (hit < end) {
            const char* begin = mBuffer.data() + mBegin;
            const auto* before = static_cast<const char*>(memrchr(begin, '\n', hit - mBegin));
            passOver(before != nullptr ? mBegin + static_cast<size_t>(before - begin) + 1 : mBegin);
            bool isTooLong = false;
            if (takeLine(line, isTooLong) && !isTooLong) {
                return true;
            }
            continue;
        }
        passOver(end);
        if (mAtEnd) {
            return false;
        }
        readOn();
    }
}

}  // namespace logcat
