// What the program asks of the player, which it loads once the environment is set.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "LogFile.h"
#include "LogHeader.h"

struct ReplayOptions {
    std::string path;                // the log's, or "-" for standard input
    replay::LogFile* log = nullptr;  // opened
    replay::LogHeader header;
    std::string json;  // where the service's calls go: a path, "-", or empty for nowhere
    uint32_t repeat = 1;
    bool quiet = false;
    bool timing = false;                // keep the recorded gaps
    bool free = false;                  // do not wait for a call before the next thread's
    std::vector<std::string> images;    // play no others, if there are any
    std::optional<std::string> answer;  // of the service, to everything
};

// Plays the log and returns a replay::ExitStatus.
using InfosyncPlay = int(const ReplayOptions* options);

// The player's entry point. The program looks it up by this name in the loaded player.
extern "C" __attribute__((visibility("default"))) InfosyncPlay infosyncPlay;
inline constexpr char kInfosyncPlay[] = "infosyncPlay";
