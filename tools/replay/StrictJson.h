// JSON as a capture log takes it: objects that are not deep and have no name twice.

#pragma once

#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "LineError.h"

namespace replay {

// The object that `text` is; null after something was added to `errors`. `isJson` is then set to
// whether the text is JSON at all.
nlohmann::json parseObject(std::string_view text, std::vector<LineError>& errors, bool* isJson);

}  // namespace replay
