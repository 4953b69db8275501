// Walks through a text.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace logcat {

// Each operation takes what it names off the beginning; if it is not there, the operation returns
// false and takes nothing.
class Cursor {
  public:
    explicit Cursor(std::string_view text) : mRest(text) {}

    std::string_view rest() const { return mRest; }

    bool take(std::string_view text) {
        if (mRest.substr(0, text.size()) != text) {
            return false;
        }
        mRest.remove_prefix(text.size());
        return true;
    }

    void takeBlanks() {
        while (take(" ")) {
        }
    }

    // Up to 18 digits.
    bool takeNumber(int64_t& number, size_t least = 1, size_t most = 18) {
        size_t length = 0;
        int64_t value = 0;
        while (length < mRest.size() && length < most && mRest[length] >= '0' &&
               mRest[length] <= '9') {
            value = value * 10 + (mRest[length++] - '0');
        }
        if (length < least) {
            return false;
        }
        number = value;
        mRest.remove_prefix(length);
        return true;
    }

    // What is before `end`, and `end` itself.
    bool takeUpTo(std::string_view end, std::string_view& text) {
        const size_t position = mRest.find(end);
        if (position == std::string_view::npos) {
            return false;
        }
        text = mRest.substr(0, position);
        mRest.remove_prefix(position + end.size());
        return true;
    }

  private:
    std::string_view mRest;
};

}  // namespace logcat
