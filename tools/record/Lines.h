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

// When something is done, and on which thread.
struct Moment {
    int64_t at;                // CLOCK_MONOTONIC, nanoseconds
    std::string_view written;  // the thread's fields, as its lines have them

    // This thread, now. A thread's name is looked up at most once per millisecond, so that a new
    // one may be seen that much later; `scratch` is for that. `written` lives as long as the
    // thread.
    static Moment now(Line& scratch);
};

// The thread's fields alone, as a line that is not ended.
void writeThread(Line& line, std::string_view name, pid_t tid);

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
// part has registered; of these no more are named than fit into `mostCutBytes`. `calls` is the
// number of the last call before.
void writeHeader(Line& line, const Header& header, uint64_t part, uint64_t calls,
                 const Answers& answers, const Names& cut, size_t mostCutBytes);

// Begins a call's line; the arguments follow.
void beginCall(Line& line, uint64_t number, const Moment& moment, bool isOther,
               std::string_view call);

// Begins the line of an answer of the service; what was answered follows.
void beginAnswer(Line& line, uint64_t number, const Moment& moment, std::string_view key);

// The last line of a recording that ends in an orderly way, or, unless `next` is 0, of a part that
// the part of that number follows.
void writeEnd(Line& line, uint64_t calls, uint64_t next);

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
