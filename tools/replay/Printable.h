// Makes texts of unknown origin safe to print.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace replay {

// The text with control characters, backslashes and bytes that are not UTF-8 as escapes. A text
// of more than `longest` bytes is cut, and ends in "...".
std::string printable(std::string_view text, size_t longest = std::string_view::npos);

}  // namespace replay
