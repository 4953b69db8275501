// The images that are registered, and not unregistered yet.

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Lines.h"

namespace recording {

// Keeps the memory of names that have gone for those to come.
class RegisteredNames {
  public:
    void add(const std::string& name) {
        if (mSpare.empty()) {
            mNames.insert(name);
        } else if (mNames.find(name) == mNames.end()) {
            mSpare.back().value() = name;
            mNames.insert(std::move(mSpare.back()));
            mSpare.pop_back();
        }
    }

    void remove(const std::string& name) {
        const auto position = mNames.find(name);
        if (position == mNames.end()) {
            return;
        }
        if (mSpare.size() < kMostSpare) {
            mSpare.reserve(kMostSpare);
            mSpare.push_back(mNames.extract(position));
        } else {
            mNames.erase(position);
        }
    }

    const Names& names() const { return mNames; }

  private:
    static constexpr size_t kMostSpare = 64;

    Names mNames;
    std::vector<Names::node_type> mSpare;
};

}  // namespace recording
