// What two captures, or two sessions, do not have in common.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace diff {

// In the order in which they are shown: the larger first.
enum class Kind {
    kSwitch,   // of the sessions
    kCapture,  // it is on one side only
    kError,    // a text, with how often it was told
    kVendorResult,
    kNodeState,  // its state, or whether it timed out or completed
    kNode,       // it is on one side only
    kCourse,     // whether it was flushed and removed, its reports, and its calls without effect
    kStage,      // it was told on one side only
    kParameter,
    kDuration,  // registration to flush, shot to shot, a node's or a stage's
};

// Its name for programs, such as "vendor_result".
const char* nameOf(Kind kind);

// All texts are as the rows have them.
struct Difference {
    Kind kind;
    std::string item;              // what differs, such as "iso", "61" or "state"
    std::string node;              // whose; empty: no node's
    std::optional<std::string> a;  // absent: the side does not have it
    std::optional<std::string> b;
    std::optional<int64_t> change;  // of a duration, in microseconds
};

}  // namespace diff
