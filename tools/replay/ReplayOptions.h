// What the program asks of the player, which it loads once the environment is set.

#pragma once

#include <cstdint>
#include <string>

struct ReplayOptions {
    std::string log;   // a path, or "-" for standard input
    std::string json;  // where the service's calls go: a path, "-", or empty for nowhere
    uint32_t repeat = 1;
    bool quiet = false;
};

// Plays the log and returns the exit status: 0, 1 for a failure while playing, 2 for input or
// output that cannot be used.
using InfosyncPlay = int(const ReplayOptions* options);
inline constexpr char kInfosyncPlay[] = "infosyncPlay";
