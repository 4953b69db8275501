// The kinds of lines that a recording consists of.

#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "Line.h"

namespace recording {

// Who does something, and when.
struct Moment {
    int64_t at = 0;  // CLOCK_MONOTONIC, nanoseconds
    char thread[16] = {};
    pid_t tid = 0;

    // This thread, now.
    static Moment now();
};

// What a file begins with.
struct Header {
    pid_t pid = 0;
    std::string process;
    bool supported = false;  // the two property switches
    bool forceEnabled = false;
    bool service = false;
};

using Answers = std::map<std::string, std::string, std::less<>>;
using Names = std::set<std::string, std::less<>>;

// Writes the whole header of a part. `answers` are the last ones, `cut` the images that an earlier
// part has registered; of these no more are named than fit into `mostCutBytes`.
void writeHeader(Line& line, const Header& header, uint64_t part, const Answers& answers,
                 const Names& cut, size_t mostCutBytes);

// Begins a call's line; the arguments follow.
void beginCall(Line& line, uint64_t number, const Moment& moment, bool isOther,
               std::string_view call);

// Begins the line of an answer of the service; what was answered follows.
void beginAnswer(Line& line, uint64_t number, const Moment& moment, std::string_view key);

// The last line of an orderly end, as a text.
void writeEnd(Line& line, uint64_t calls);

// The names of a call's arguments.
template <size_t Count>
using FieldNames = std::array<std::string_view, Count>;

template <typename... Arguments>
void writeArguments(Line& line, const FieldNames<sizeof...(Arguments)>& names,
                    const Arguments&... arguments) {
    const std::string_view* name = names.data();
    (line.field(*name++, arguments), ...);
}

}  // namespace recording
