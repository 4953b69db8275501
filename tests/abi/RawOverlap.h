// What the overlap library of bare tables offers to the tests, besides what a phone's offers.

#pragma once

// Hands over what was received since the last call, one line per call.
using TakeReceived = const char*();
extern "C" TakeReceived takeReceived;
