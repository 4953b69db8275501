// A capture as rows.

#pragma once

#include <vector>

#include "Capture.h"
#include "Row.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {

rows::CaptureRow captureRowOf(const Capture& capture, const Session& session,
                              const RowOptions& options);

// A row for each node, in the capture's order. `captureRow` is the capture's own.
std::vector<rows::NodeRow> nodeRowsOf(const Capture& capture, const rows::CaptureRow& captureRow);

// All but how many rows there are.
rows::RunRow runRowOf(const Session& session, const RowOptions& options);

}  // namespace view
