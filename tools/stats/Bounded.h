// Values by name, of any number of names in memory that does not grow with them.

#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace stats {

// "2" before "10", and numbers before other texts.
struct NumbersFirst {
    bool operator()(const std::string& a, const std::string& b) const {
        return key(a) < key(b) || (key(a) == key(b) && a < b);
    }

  private:
    // 0 and the number of digits, or 1 for what is no number.
    static std::pair<int, size_t> key(const std::string& text) {
        const bool isNumber =
                !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char character) {
                    return std::isdigit(character) != 0;
                });
        return isNumber ? std::make_pair(0, text.size()) : std::make_pair(1, size_t{0});
    }
};

// The first names have a value each; those that come when there are enough, and very long ones,
// share one.
template <typename Value>
class Bounded {
  public:
    static constexpr size_t kLongestName = 200;  // bytes

    explicit Bounded(size_t most) : mMost(most) {}

    // A reference that stays valid.
    Value& of(const std::string& name) {
        const auto position = mNamed.find(name);
        if (position != mNamed.end()) {
            return position->second;
        }
        if (mNamed.size() < mMost && name.size() <= kLongestName) {
            return mNamed[name];
        }
        return mRest ? *mRest : mRest.emplace();
    }

    const std::map<std::string, Value, NumbersFirst>& named() const { return mNamed; }
    // Null if there were never too many.
    const Value* rest() const { return mRest ? &*mRest : nullptr; }

  private:
    size_t mMost;
    std::map<std::string, Value, NumbersFirst> mNamed;
    std::optional<Value> mRest;
};

}  // namespace stats
