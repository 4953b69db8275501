// What the service received, for the terminal.

#pragma once

#include <cstddef>
#include <string>

#include "Capture.h"
#include "View.h"

namespace view {

// The parameters, events and closing call of the capture's report of that index.
std::string receivedText(const Capture& capture, size_t index, const Session& session);

}  // namespace view
