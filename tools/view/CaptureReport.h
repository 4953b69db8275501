// All that is known of a capture, for the terminal.

#pragma once

#include <optional>
#include <string>

#include "Capture.h"
#include "TerminalStyle.h"
#include "TimeLine.h"
#include "View.h"

namespace view {

// Ends in an empty line. `timeLine` is that of the capture.
std::string captureReport(const Capture& capture, const Session& session,
                          const std::optional<TimeLine>& timeLine, const TerminalStyle& style);

}  // namespace view
