// Says where in a line something is wrong.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "LineError.h"
#include "Printable.h"
#include "Spelling.h"

namespace replay {

// What a line may hold.
enum class LineRules {
    kWithoutHeader,  // what is written by hand; unknown fields are errors
    kUnderHeader,    // what is recorded as well; unknown fields are ignored
};

constexpr size_t kLongestFieldName = 60;  // in a message

// The way from a line to the value being read. Turned into text only for an error.
struct Path {
    const Path* parent = nullptr;
    std::string_view key;
    size_t index = 0;  // if there is no key

    bool isLine() const { return parent == nullptr && key.data() == nullptr; }
    std::string text() const {
        if (parent == nullptr || parent->isLine()) {
            return printable(key, kLongestFieldName);
        }
        return parent->text() + (key.data() != nullptr ? '.' + printable(key, kLongestFieldName)
                                                       : '[' + std::to_string(index) + ']');
    }
};

// Collects what is wrong with one line.
class Errors {
  public:
    Errors(std::vector<LineError>& list, LineRules rules)
        : mList(list), mBefore(list.size()), mRules(rules) {}

    void add(const Path& path, std::string what) {
        mList.push_back({path.text(), std::move(what)});
    }
    // A field that is not among the known ones of `owner`. A newer writer may have put it under
    // a header, and it is ignored there.
    void addUnknown(const Path& path, std::string_view owner,
                    const std::vector<std::string_view>& known) {
        if (!underHeader()) {
            add(path, "is not a field of " + std::string(owner) + didYouMean(path.key, known));
        }
    }
    bool underHeader() const { return mRules == LineRules::kUnderHeader; }
    bool any() const { return mList.size() > mBefore; }

  private:
    std::vector<LineError>& mList;
    size_t mBefore;
    LineRules mRules;
};

}  // namespace replay
