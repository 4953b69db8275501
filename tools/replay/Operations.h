// The library's operations, as the calls of a capture log.

#pragma once

#include <string>
#include <string_view>

#include "CaptureLog.h"
#include "FieldErrors.h"
#include "JsonTree.h"

namespace replay {

// What `line` says of the operation `name` goes into `step`, or an error is added. Names of
// images get the suffix in the call itself. Fields that every call may have are passed over.
void readOperation(std::string_view name, const JsonValue& line, const std::string& imageSuffix,
                   CaptureStep& step, Errors& errors);

// The same for a call without its arguments: its name alone.
void readOperationName(std::string_view name, CaptureStep& step, Errors& errors);

}  // namespace replay
