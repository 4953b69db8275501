#include "PageNames.h"

#include <cstddef>
#include <string>
#include <utility>

#include "JsonText.h"

namespace view {
namespace {

constexpr size_t kMostTexts = 4096;
constexpr size_t kLongestText = 64;

}  // namespace

std::string PageNames::json(const std::string& text) {
    const auto known = mNumbers.find(text);
    if (known != mNumbers.end()) {
        return std::to_string(known->second);
    }
    std::string quoted = jsonText(text);
    if (text.size() > kLongestText || mTexts.size() == kMostTexts) {
        return quoted;
    }
    mNumbers.emplace(text, mTexts.size());
    mTexts.push_back(std::move(quoted));
    return std::to_string(mTexts.size() - 1);
}

std::string PageNames::list() const {
    std::string list;
    for (const std::string& text : mTexts) {
        list += (list.empty() ? "" : ",") + text;
    }
    return '[' + list + ']';
}

}  // namespace view
