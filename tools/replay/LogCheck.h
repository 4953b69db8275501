// Checks a whole log before any of it is played.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Progress.h"
#include "ReplayOptions.h"
#include "StepReader.h"

namespace replay {

// What must be known of a log before it is played.
struct LogFacts {
    std::vector<uint64_t> answered;          // numbers of the calls with an answer's line; sorted
    std::optional<std::string> firstAnswer;  // in such a line, to whether snapshots are collected
    uint64_t laterAnswers = 0;               // that differ from the one before
    uint64_t calls = 0;                      // in the log, played or not
    uint64_t callsWithTime = 0;
    bool goesOn = false;             // the recording does, in another file
    std::vector<std::string> notes;  // what standard error was told as well
};

// The command that asks whether snapshots are collected.
inline constexpr char kCollectionKey[] = "snapshotInfoCollectEnable";

// Reads the whole log, and lists on standard error what is wrong with it, or what will not be
// played and what may be missing. Returns nothing if anything is wrong. Throws what the reader
// throws.
std::optional<LogFacts> checkLog(StepReader& reader, const ReplayOptions& options,
                                 Progress& progress);

}  // namespace replay
