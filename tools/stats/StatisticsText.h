// Statistics as tables for the terminal.

#pragma once

#include <string>

#include "Statistics.h"
#include "TerminalStyle.h"

namespace stats {

std::string statisticsText(const Statistics& statistics, const view::TerminalStyle& style);

}  // namespace stats
