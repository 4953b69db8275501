// A line of a log, in whatever format logcat wrote it.

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "LogTime.h"

namespace logcat {

// The tags of the library, and the one under which the logger tells what it has dropped.
inline constexpr std::string_view kManagerTag = "kelo-InfoSynchronizer";
inline constexpr std::string_view kEngineTag = "ZuAlgoEngine";
inline constexpr std::string_view kOverlapTag = "[EC_Overlap]";
inline constexpr std::string_view kChattyTag = "chatty";

struct LogLine {
    std::optional<LogTime> time;
    std::optional<int32_t> pid;
    std::optional<int32_t> tid;
    std::string_view tag;      // one of those above; empty in the format thread, which writes none
    std::string_view message;  // of the format long: empty, it follows on lines of its own
    std::string_view prefix;   // what is before the message; the same in lines of one entry
    bool isLong = false;
};

// Reads a line in one of the formats threadtime, time, brief, tag, process, thread and long, with
// any modifiers, of what liblog prints at a desk, or of the desk's debug log. False if it is none,
// or has another tag.
bool readLogLine(std::string_view text, LogLine& line);

// The text without the code that ends a colour, if it has one.
std::string_view withoutColourEnd(std::string_view text);

// Whether a line of any tag looks like one of logcat.
bool looksLikeLogcat(std::string_view text);

}  // namespace logcat
