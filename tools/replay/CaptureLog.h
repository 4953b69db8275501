// Reads one line of a capture log.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "FieldErrors.h"
#include "JsonTree.h"
#include "LineError.h"

namespace camInfosync {
class InfoSynchronizerManager;
struct RequestRecord;
}  // namespace camInfosync

namespace replay {

// What the service answered to one question.
struct ServiceAnswer {
    std::string key;
    std::string text;
    bool threw = false;  // instead of answering
};

// What a call gives that its effect depends on.
struct CallArguments {
    std::string image;               // with the suffix
    std::optional<int64_t> code;     // a stage, error code, state or type, given as such
    std::vector<std::string> names;  // of the nodes, results or stages that it tells of
    bool isList = false;             // a list of algorithms
    bool isNull = false;             // null stands where a text, key, record or result must be
    std::shared_ptr<const camInfosync::RequestRecord> record;  // of a request
};

// What one line asks for.
struct CaptureStep {
    enum class Kind {
        kNothing,  // an empty line or a comment
        kCall,
        kOmittedCall,  // a recorded call without its arguments
        kAnswer,       // the service has answered what a recorded call asked
        kEnd,          // the recording ended in an orderly way
        kBarrier,
        kSleep,
        kForeign,  // no line of a capture log
        kBroken,   // no JSON
    };

    Kind kind = Kind::kNothing;
    uint64_t line = 0;  // in the log; set by who reads it
    std::chrono::milliseconds sleep{0};
    std::string thread;  // of a call: the thread to run it on; empty is the main thread

    // Of a line that was recorded:
    std::optional<uint64_t> at;  // CLOCK_MONOTONIC in nanoseconds; lines by hand may have it too
    std::optional<int32_t> tid;  // the thread's id
    uint64_t number = 0;         // of the call; of an answer: the call that asked
    ServiceAnswer answer;
    bool goesOn = false;     // of the end: in another file
    bool unordered = false;  // did not wait until the calls before had returned

    // Of a call:
    std::string_view operation;
    std::optional<std::string> image;  // that it belongs to, as written
    CallArguments arguments;
    bool isFlush = false;
    bool reports = false;         // makes the service receive a report
    bool onOtherManager = false;  // on GetInstance()'s, not on getInstance()'s
    // Makes the call, any number of times: each gets copies of the arguments.
    std::function<void(camInfosync::InfoSynchronizerManager&)> run;

    bool isRecorded() const { return tid.has_value(); }
};

// Reads a line without its newline. Everything that is wrong with it is appended to `errors`;
// the step is meaningful only if nothing was, except that its kind then is kForeign or kBroken
// if the line is so. `imageSuffix` is appended to the image name. Any bytes may be given; the
// memory needed is proportional to their number. `tree` is room that lines can share.
CaptureStep readCaptureLine(std::string_view line, const std::string& imageSuffix,
                            std::vector<LineError>& errors, LineRules rules, JsonTree& tree);
inline CaptureStep readCaptureLine(std::string_view line, const std::string& imageSuffix,
                                   std::vector<LineError>& errors,
                                   LineRules rules = LineRules::kWithoutHeader) {
    JsonTree tree;
    return readCaptureLine(line, imageSuffix, errors, rules, tree);
}

}  // namespace replay
