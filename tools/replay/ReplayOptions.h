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

// Plays the log and returns a replay::ExitStatus.
using InfosyncPlay = int(const ReplayOptions* options);

// The player's entry point. The program looks it up by this name in the loaded player.
extern "C" __attribute__((visibility("default"))) InfosyncPlay infosyncPlay;
inline constexpr char kInfosyncPlay[] = "infosyncPlay";
