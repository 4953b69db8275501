// Captures that no phone has taken, for the tests of views.

#pragma once

#include <cstdint>

#include "Capture.h"
#include "View.h"

namespace view {

// A small one that has everything that a source can tell.
Capture completeCapture();

// Has nothing but nodes.
Capture nodesOnlyCapture();

// A capture as bursts have it: 8 nodes, 12 stages, 34 calls on four threads. Every 50th has failed,
// and it and every 70th have a call without effect.
Capture ordinaryCapture(uint64_t number);

// A capture that has what is not to be expected: no times, times that are equal, far, endless or in
// the wrong order, and names that want to be markup, script or controls. Always the same for the
// same number.
Capture hostileCapture(uint64_t number);

// What goes with them.
Session madeSession(bool isHostile);

}  // namespace view
