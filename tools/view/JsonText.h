// Parts of JSON texts.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace view {

// A text of a log as a JSON string that is safe wherever it is shown or put, also in a script of a
// page: control characters, bytes that are not UTF-8 and characters that mislead are escapes that
// can be read, as on the terminal.
std::string jsonText(std::string_view text);

// The same of a text that has been made safe to show.
std::string jsonOfSafe(std::string_view text);

// As a number with all its digits; what is not finite as "inf", "-inf" or "nan".
std::string jsonNumber(double value);

// Nanoseconds as microseconds with three digits behind the point.
std::string microseconds(int64_t nanoseconds);

}  // namespace view
