// What is wrong with a line of a capture log.

#pragma once

#include <string>

namespace replay {

struct LineError {
    std::string field;  // a path as in "camIds[2]", or "line"; printable
    std::string what;   // printable
};

}  // namespace replay
