// JSON as a capture log takes it: objects that are not deep and have no name twice.

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "JsonTree.h"
#include "LineError.h"

namespace replay {

constexpr size_t kDeepestNesting = 8;

// The object that `text` is, with its members in the order of their names; null after something
// was added to `errors`. It lies in `tree`. `isJson` is set to whether the text is JSON at all.
const JsonValue* parseObject(std::string_view text, JsonTree& tree, std::vector<LineError>& errors,
                             bool* isJson);

}  // namespace replay
