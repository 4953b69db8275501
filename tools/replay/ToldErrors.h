// Errors that a call tells of.

#pragma once

#include <cstddef>
#include <vector>

#include "CallKind.h"
#include "CaptureLog.h"
#include "Finding.h"
#include "RequestRecord.h"

namespace replay {

// The errors that an update has told, by what the record holds now; it had `errorsBefore` errors.
std::vector<view::Finding> toldErrors(const CaptureStep& step, CallKind kind,
                                      const camInfosync::RequestRecord& record,
                                      size_t errorsBefore);

// The errors that the record of a request holds.
std::vector<view::Finding> givenErrors(const CaptureStep& step,
                                       const camInfosync::RequestRecord& record);

}  // namespace replay
