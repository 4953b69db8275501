// Rows as the tests of the statistics use them.

#pragma once

#include <cstdint>
#include <string>

#include "Row.h"

namespace stats {

// Named "IMG_" and its number; registered that many ms after the start.
inline rows::CaptureRow sampleCapture(int64_t number, int64_t toFlushUs) {
    rows::CaptureRow row;
    row.runId = "run";
    row.captureSeq = number;
    row.name = "IMG_" + std::to_string(number);
    row.registeredAt = 1000 * number;
    row.toFlush = toFlushUs;
    row.isFlushed = true;
    row.hasFailed = false;
    return row;
}

inline rows::NodeRow sampleNode(const std::string& node, int64_t tookUs) {
    rows::NodeRow row;
    row.runId = "run";
    row.captureSeq = 1;
    row.node = node;
    row.took = tookUs;
    row.timedOut = false;
    row.hasFailed = false;
    return row;
}

}  // namespace stats
