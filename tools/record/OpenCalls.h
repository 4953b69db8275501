// The calls that the service has not answered yet.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Call.h"

namespace recording {

struct OpenCall {
    uint64_t number = 0;
    Call::Kind kind = Call::Kind::kCommand;
    std::string image;
    std::string line;  // as it was written; empty if it was too long to be kept
};

// In the order of their numbers. Keeps the memory of calls that have gone for those to come.
class OpenCalls {
  public:
    void add(uint64_t number, const Call& call, std::string_view line) {
        if (mCount == mCalls.size()) {
            mCalls.emplace_back();
        }
        OpenCall& open = mCalls[mCount];
        open.number = number;
        open.kind = call.kind;
        open.image = call.image != nullptr ? std::string_view(*call.image) : std::string_view();
        open.line = line.size() <= kMostKeptBytes ? line : std::string_view();
        ++mCount;
    }

    // Null if there is none of that number.
    const OpenCall* find(uint64_t number) const {
        const auto position = std::find_if(
                begin(), end(), [&](const OpenCall& open) { return open.number == number; });
        return position != end() ? position : nullptr;
    }

    void remove(const OpenCall* open) {
        const auto position = mCalls.begin() + (open - begin());
        if (position->image.capacity() > kMostKeptBytes) {
            std::string().swap(position->image);  // assigned an empty one, it may keep its memory
        }
        std::rotate(position, position + 1, mCalls.begin() + static_cast<ptrdiff_t>(mCount));
        --mCount;
    }

    const OpenCall* begin() const { return mCalls.data(); }
    const OpenCall* end() const { return mCalls.data() + mCount; }

  private:
    static constexpr size_t kMostKeptBytes = size_t{64} << 10U;

    std::vector<OpenCall> mCalls;  // of these the first mCount
    size_t mCount = 0;
};

}  // namespace recording
