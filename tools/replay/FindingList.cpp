#include "FindingList.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "Finding.h"

namespace replay {
namespace {

constexpr size_t kMostOfAGroup = 10;
constexpr size_t kMostGroups = 1000;

}  // namespace

std::string shortened(std::string_view text, size_t longest) {
    if (text.size() <= longest) {
        return std::string(text);
    }
    size_t size = longest;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    return std::string(text.substr(0, size)) + "...";
}

FindingList::Key FindingList::keyOf(view::FindingKind kind, const std::string& group) const {
    const Key key{kind, std::hash<std::string>()(group)};
    const auto groups = mGroupsOfKind.find(kind);
    const bool isFull = groups != mGroupsOfKind.end() && groups->second >= kMostGroups;
    return isFull && mGroups.count(key) == 0 ? Key{kind, 0} : key;
}

bool FindingList::keeps(view::FindingKind kind, const std::string& group) const {
    const auto position = mGroups.find(keyOf(kind, group));
    return position == mGroups.end() || position->second.count < kMostOfAGroup;
}

void FindingList::add(view::Finding finding, const std::string& group) {
    const auto [position, isNew] = mGroups.try_emplace(keyOf(finding.kind, group));
    mGroupsOfKind[finding.kind] += isNew ? 1 : 0;
    Group& known = position->second;
    known.count += 1;
    if (known.count <= kMostOfAGroup) {
        mFindings.push_back(std::move(finding));
    } else if (known.count == kMostOfAGroup + 1) {
        known.firstCounted = std::move(finding);
    }
}

std::vector<view::Finding> FindingList::take() {
    for (auto& [key, group] : mGroups) {
        if (group.count > kMostOfAGroup) {
            const size_t others = group.count - kMostOfAGroup - 1;
            group.firstCounted.calls += others;
            if (others != 0) {
                group.firstCounted.text += "; and " + std::to_string(others) + " more like this";
            }
            mFindings.push_back(std::move(group.firstCounted));
        }
    }
    std::stable_sort(mFindings.begin(), mFindings.end(),
                     [](const view::Finding& left, const view::Finding& right) {
                         return std::tie(left.place.source, left.place.line) <
                                std::tie(right.place.source, right.place.line);
                     });
    mGroups.clear();
    mGroupsOfKind.clear();
    return std::move(mFindings);
}

}  // namespace replay
