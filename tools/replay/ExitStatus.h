// What the program ends with.

#pragma once

namespace replay {

enum ExitStatus : int {
    kPlayed = 0,
    kFailed = 1,    // while playing, or without a player
    kUnusable = 2,  // options, input or output that cannot be used
    kFindings = 3,  // played, with findings that the user wants it to fail on
};

}  // namespace replay
