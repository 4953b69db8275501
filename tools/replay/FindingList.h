// Collects findings without growing for ever.

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Finding.h"

namespace replay {

// The beginning of a text of any length, for a finding's text. Does not end within a character.
std::string shortened(std::string_view text, size_t longest = 1024);

// Keeps ten findings of a kind and group, of a thousand groups of that kind, and counts the others.
class FindingList {
  public:
    // `group` is what findings have in common: a name, a node.
    void add(view::Finding finding, const std::string& group);

    // Whether a finding of that kind and group would be kept.
    bool keeps(view::FindingKind kind, const std::string& group) const;

    // In the order of the lines; one finding counts those that were not kept.
    std::vector<view::Finding> take();

  private:
    struct Group {
        uint64_t count = 0;
        view::Finding firstCounted{};  // the first one that was not kept
    };
    using Key = std::pair<view::FindingKind, size_t>;  // the group's hash; 0 for those beyond

    Key keyOf(view::FindingKind kind, const std::string& group) const;

    std::vector<view::Finding> mFindings;
    std::map<Key, Group> mGroups;
    std::map<view::FindingKind, size_t> mGroupsOfKind;
};

}  // namespace replay
