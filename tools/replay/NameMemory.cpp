#include "NameMemory.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Spelling.h"

namespace replay {
namespace {

constexpr size_t kMostNames = 65'536;
constexpr size_t kMostNear = 512;
constexpr size_t kLongestNear = 64;

size_t hashOf(std::string_view name) {
    return std::hash<std::string_view>()(name);
}

}  // namespace

void NameMemory::add(std::string_view name, uint64_t line) {
    const size_t hash = hashOf(name);
    if (!mLines.insert_or_assign(hash, line).second) {
        return;
    }
    mOrder.push_back(hash);
    if (mOrder.size() > kMostNames) {
        mLines.erase(mOrder.front());
        mOrder.pop_front();
    }
}

std::optional<uint64_t> NameMemory::lineOf(std::string_view name) const {
    const auto position = mLines.find(hashOf(name));
    return position != mLines.end() ? std::optional<uint64_t>(position->second) : std::nullopt;
}

void NearNames::add(std::string_view name) {
    if (name.size() > kLongestNear) {
        return;
    }
    mNames.emplace_back(name);
    if (mNames.size() > kMostNear) {
        mNames.pop_front();
    }
}

std::string NearNames::didYouMean(std::string_view name) const {
    // The latest first: of equally near names it is the likelier one.
    return replay::didYouMean(name, std::vector<std::string_view>(mNames.rbegin(), mNames.rend()));
}

}  // namespace replay
