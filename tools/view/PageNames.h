// Texts that occur again and again in a page's data.

#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace view {

// Gives each short text a number. Takes up no more memory from a certain number of texts on.
class PageNames {
  public:
    // The text's number or, of a text that has none, the text itself, as JSON.
    std::string json(const std::string& text);
    // All texts by number, as a JSON array.
    std::string list() const;

  private:
    std::unordered_map<std::string, size_t> mNumbers;
    std::vector<std::string> mTexts;  // as JSON
};

}  // namespace view
