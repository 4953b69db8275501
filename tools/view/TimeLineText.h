// A time line, drawn with characters.

#pragma once

#include <string>

#include "TerminalStyle.h"
#include "TimeLine.h"

namespace view {

// Lines of the style's width or less: an axis, a line for each lane, and one each for the errors
// and the flushes. A span that is shorter than a column still takes one.
std::string timeLineText(const TimeLine& timeLine, const TerminalStyle& style);

}  // namespace view
