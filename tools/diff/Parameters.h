// What a record holds, as texts.

#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Row.h"

namespace diff {

// A column's name, and its value if it is known.
using Parameter = std::pair<const char*, std::optional<std::string>>;

// The same names in the same order for each row, without what follows from others: vendor results,
// errors, stages and what is counted.
std::vector<Parameter> parametersOf(const rows::CaptureRow& row);

}  // namespace diff
