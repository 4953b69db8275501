// What a message of the library says.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace logcat {

struct Message {
    enum class Kind {
        kConstructEnter,
        kConstructExit,
        kServiceFound,
        kOverlap,  // of the overlap library's client
        kRegister,
        kUnregister,
        kFrame,
        kAlgorithms,
        kNodeTimes,
        kTimeMap,
        kSwitch,
        kFlushDone,
        kSubmit,
        kStart,
        kCompletion,
        kVendorError,
        kUnknownName,
        kUnknownRemoval,
        kAlreadyRegistered,
        kCodeOutOfRange,
        kNoErrorText,
        kNothingGiven,
        kPileUp,
    };

    Kind kind = Kind::kOverlap;
    std::string operation;  // the public one
    std::string name;       // of the image; empty if it names none
    std::string text;       // what else it says: an event, an error, a code, a stage
    std::optional<uint64_t> queueSize;
    bool isCut = false;      // its end is missing
    bool isNameCut = false;  // the name's end, too
};

// The longest message that the platform's log keeps, in bytes, with its origin before it.
inline constexpr size_t kLongestMessage = 1023;

// Whether a message begins as those of the library: "GROUP FILE:LINE FUNCTION()". With `tag`
// empty, also FILE must be one of the library's.
bool hasOrigin(std::string_view tag, std::string_view message);

// Reads a message under one of the library's tags, or under an unknown one: empty. Nothing if it
// is none of the library's.
std::optional<Message> readMessage(std::string_view tag, std::string_view message);

// The text before `logcat -v printable` wrote it.
std::string fromPrintable(std::string_view text);

// Whether an event has its end.
bool isWholeEvent(std::string_view event);

// The event of a node, as a report has it.
struct NodeEvent {
    std::string node;
    std::string pipelineName;
    int64_t time = 0;
    std::string camera;  // empty: there was none
    bool hasTime = false;
};

// Reads an event, of which the end may be missing. `expectedName` is the pipeline's name, if it is
// known: names are not escaped, so that they can look like what follows them.
NodeEvent readNodeEvent(std::string_view event, const std::optional<std::string>& expectedName);

struct SubmitEvent {
    std::string pipelineName;
    std::string timestamp;
    bool isCut = false;
};
SubmitEvent readSubmitEvent(std::string_view event);

}  // namespace logcat
