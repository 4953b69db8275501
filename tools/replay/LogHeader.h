// The first line of a capture log, which says what it was recorded under.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "LogFile.h"

namespace replay {

struct LogHeader {
    uint64_t line = 0;   // its number in the log; 0: there is no header
    bool isCut = false;  // nothing is left of the log but the header's beginning
    std::map<std::string, bool> properties;
    bool service = true;                         // whether there was one
    std::map<std::string, std::string> answers;  // the service's last ones when the file began
    std::vector<std::string> cut;                // images whose first calls are in a lost file
    std::optional<int64_t> pid;
    std::string process;  // empty: not known, as the next two
    std::string device;
    std::string build;
    uint64_t moreCut = 0;  // further ones, which are not named
    // The same moment on CLOCK_MONOTONIC and CLOCK_REALTIME, in nanoseconds.
    std::optional<int64_t> startMonotonic;
    std::optional<int64_t> startReal;

    bool exists() const { return line != 0; }
};

// Reads the header if the log begins with one, and lets the log have lines as long as a
// recording's. Says on standard error what is wrong with it, or that the file is of a kind that
// cannot be a log. Returns whether nothing was. Throws what LogFile throws.
bool readHeader(LogFile& log, LogHeader& header);

}  // namespace replay
