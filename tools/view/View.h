// What shows captures: on the terminal, as a trace, as a page.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Capture.h"
#include "Finding.h"

namespace view {

enum class Clock {
    kNone,       // the source has no times
    kMonotonic,  // since the phone was started
    kReal,       // since 1970, UTC
};

// What belongs to no single capture.
struct Session {
    std::vector<std::string> sources;  // files, as the user named them; "-" is standard input
    Clock clock = Clock::kNone;
    // What makes the session's times those of the real clock, when added; if known.
    std::optional<int64_t> toReal;
    // Properties, service and "collection", whether the library reports at all: name to state.
    std::map<std::string, std::string> switches;
    std::vector<Finding> findings;   // in the order of the sources
    std::vector<std::string> notes;  // on the source itself, one line each
    uint64_t calls = 0;              // made, or seen in a log
    // Absent where the source cannot tell:
    std::optional<uint64_t> flushes;
    std::optional<uint64_t> reports;
    std::optional<uint64_t> serviceCalls;
};

// Is given each capture once it is complete, and the session at the end. The order of the captures
// is that of their completion; their numbers have the order of registration. All calls come from
// one thread at a time.
//
// What a view cannot write it throws as std::runtime_error with a text for the user.
class View {
  public:
    View() = default;
    virtual ~View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    virtual void add(const Capture& capture, const Session& session) = 0;
    virtual void finish(const Session& session) = 0;
};

}  // namespace view
