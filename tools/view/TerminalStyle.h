// How to draw for whoever reads a file.

#pragma once

#include <cstddef>
#include <cstdio>

namespace view {

struct TerminalStyle {
    size_t width = 80;    // columns; between 20 and 1,000
    bool utf8 = false;    // blocks and dots beyond ASCII may be drawn
    bool colour = false;  // escape sequences may be written
};

// For a terminal its own width; else COLUMNS, else 80. UTF-8 if LC_ALL, LC_CTYPE or LANG, the first
// that is set, says so. Colour on a terminal that is not "dumb", unless NO_COLOR is set.
TerminalStyle styleOf(std::FILE* file);

}  // namespace view
