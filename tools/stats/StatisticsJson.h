// Statistics as JSON, for programs.

#pragma once

#include <string>

#include "Statistics.h"

namespace stats {

// One object, which docs/stats.md describes, and a newline.
std::string statisticsJson(const Statistics& statistics);

}  // namespace stats
