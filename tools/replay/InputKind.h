// Recognises files that are given in place of a capture log.

#pragma once

#include <string>
#include <string_view>

namespace replay {

// What is wrong with a file that begins so, if all of it is: one sentence for the user. Empty if
// it may be a capture log.
std::string unreadableKind(std::string_view beginning);

// The same, without a look at JSON, for who wants `wanted`, as in "a capture log".
std::string compressedKind(std::string_view beginning, std::string_view wanted);

}  // namespace replay
