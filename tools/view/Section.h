// Names and values under a heading.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace view {

// Part of a report. Takes safe texts.
class Section {
  public:
    explicit Section(std::string_view heading, size_t indent = 2)
        : mHeading(heading), mIndent(indent) {}

    void add(std::string name, std::string value);
    // The lines with their values one under the other. Without a line: that nothing is known.
    std::string text() const;

  private:
    const std::string mHeading;
    const size_t mIndent;
    std::vector<std::pair<std::string, std::string>> mLines;
    size_t mWidth = 0;
};

// A heading with its only value.
std::string sectionLine(const std::string& heading, const std::string& value, size_t indent = 2);

}  // namespace view
