// The texts of rows, which are safe to show.

#pragma once

#include <string>
#include <string_view>

namespace rows {

// What the text was before its escapes were made: \n, \t, \\, \x1b, \u{202e}. What is no escape
// stays as it is.
std::string withoutEscapes(std::string_view text);

}  // namespace rows
