// Guesses what a misspelt name was meant to be.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace replay {

// "; did you mean X?" for the candidate that `text` is a close misspelling of, or nothing.
std::string didYouMean(std::string_view text, const std::vector<std::string_view>& candidates);

}  // namespace replay
