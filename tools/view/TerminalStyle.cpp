#include "TerminalStyle.h"

#include <stdio.h>  // fileno
#include <strings.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace view {
namespace {

constexpr size_t kLeastWidth = 20;
constexpr size_t kMostWidth = 1000;

// The variable's text; empty also if it is not set.
std::string variable(const char* name) {
    const char* text = std::getenv(name);
    return text != nullptr ? text : "";
}

size_t widthOf(std::FILE* file) {
    winsize size{};
    // NOLINTNEXTLINE(misc-include-cleaner): sys/ioctl.h has the command
    if (ioctl(fileno(file), TIOCGWINSZ, &size) == 0 && size.ws_col != 0) {
        return size.ws_col;
    }
    const size_t columns = std::strtoul(variable("COLUMNS").c_str(), nullptr, 10);
    return columns != 0 ? columns : TerminalStyle().width;
}

bool isUtf8() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const std::string locale = variable(name);
        if (!locale.empty()) {
            const size_t dot = locale.find('.');
            const std::string codeset =
                    dot == std::string::npos ? ""
                                             : locale.substr(dot + 1, locale.find('@') - dot - 1);
            return strcasecmp(codeset.c_str(), "utf-8") == 0 ||
                   strcasecmp(codeset.c_str(), "utf8") == 0;
        }
    }
    return false;
}

}  // namespace

TerminalStyle styleOf(std::FILE* file) {
    TerminalStyle style;
    style.width = std::clamp(widthOf(file), kLeastWidth, kMostWidth);
    style.utf8 = isUtf8();
    style.colour =
            isatty(fileno(file)) != 0 && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
    return style;
}

}  // namespace view
