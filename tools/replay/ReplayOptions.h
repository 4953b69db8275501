// What the program asks of the player, which it loads once the environment is set.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "LogFile.h"
#include "LogHeader.h"
#include "ViewOptions.h"

struct ReplayOptions {
    std::string path;                // the log's, or "-" for standard input
    replay::LogFile* log = nullptr;  // opened
    replay::LogHeader header;
    std::string json;  // where the service's calls go: a path, "-", or empty for nowhere
    uint32_t repeat = 1;
    bool records = false;               // and after each report the record that was flushed
    view::ViewOptions view;             // where `images` are also the only ones that are played
    bool timing = false;                // keep the recorded gaps
    bool free = false;                  // do not wait for a call before the next thread's
    std::optional<std::string> answer;  // of the service, to everything
};

// Plays the log and returns a replay::ExitStatus.
using InfosyncPlay = int(const ReplayOptions* options);

// The player's entry point. The program looks it up by this name in the loaded player.
extern "C" __attribute__((visibility("default"))) InfosyncPlay infosyncPlay;
inline constexpr char kInfosyncPlay[] = "infosyncPlay";
