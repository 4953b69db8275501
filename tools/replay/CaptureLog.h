// Reads one line of a capture log.

#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "LineError.h"

namespace camInfosync {
class InfoSynchronizerManager;
}  // namespace camInfosync

namespace replay {

// What one line asks for.
struct CaptureStep {
    enum class Kind { kNothing, kCall, kBarrier, kSleep };

    Kind kind = Kind::kNothing;  // kNothing: an empty line
    std::chrono::milliseconds sleep{0};
    std::string thread;    // of a call: the thread to run it on; empty is the main thread
    bool isFlush = false;  // of a call: makes the service receive a report
    // Makes the call, any number of times: each gets copies of the arguments.
    std::function<void(camInfosync::InfoSynchronizerManager&)> run;
};

// Reads a line without its newline. Everything that is wrong with it is appended to `errors`;
// the step is meaningful only if nothing was. `imageSuffix` is appended to the image name.
// Any bytes may be given; the memory needed is proportional to their number.
CaptureStep readCaptureLine(std::string_view line, const std::string& imageSuffix,
                            std::vector<LineError>& errors);

}  // namespace replay
