#include "Section.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "TerminalText.h"

namespace view {
namespace {

constexpr size_t kWidestName = 40;  // a wider one does not push the other values to the right

}  // namespace

void Section::add(std::string name, std::string value) {
    const size_t width = columnsOf(name);
    mWidth = width <= kWidestName ? std::max(mWidth, width) : mWidth;
    mLines.emplace_back(std::move(name), std::move(value));
}

std::string Section::text() const {
    std::string text = std::string(mIndent, ' ') + mHeading + '\n';
    for (const auto& [name, value] : mLines) {
        const size_t width = columnsOf(name);
        text += std::string(mIndent + 2, ' ') + name;
        if (!value.empty()) {
            text += std::string(mWidth - std::min(mWidth, width) + 2, ' ') + value;
        }
        text += '\n';
    }
    return mLines.empty() ? sectionLine(mHeading, kNotKnown, mIndent) : text;
}

std::string sectionLine(const std::string& heading, const std::string& value, size_t indent) {
    return std::string(indent, ' ') + heading + ": " + value + '\n';
}

}  // namespace view
