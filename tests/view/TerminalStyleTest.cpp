#include "TerminalStyle.h"

#include <fcntl.h>
#include <stdlib.h>  // setenv
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>

#include <gtest/gtest.h>

namespace view {
namespace {

// An environment with these variables of those that matter, and no others.
TerminalStyle styleIn(const std::map<std::string, std::string>& environment, std::FILE* file) {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG", "COLUMNS", "NO_COLOR", "TERM"}) {
        unsetenv(name);
    }
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    return styleOf(file);
}

TEST(TerminalStyle, OfAFileComesFromTheEnvironment) {
    std::FILE* file = std::tmpfile();
    const TerminalStyle bare = styleIn({}, file);
    EXPECT_EQ(80u, bare.width);
    EXPECT_FALSE(bare.utf8);
    EXPECT_FALSE(bare.colour);
    EXPECT_EQ(132u, styleIn({{"COLUMNS", "132"}}, file).width);
    EXPECT_EQ(20u, styleIn({{"COLUMNS", "3"}}, file).width);
    EXPECT_EQ(1000u, styleIn({{"COLUMNS", "99999999999999999999"}}, file).width);
    EXPECT_EQ(80u, styleIn({{"COLUMNS", "wide"}}, file).width);
    EXPECT_TRUE(styleIn({{"LANG", "de_DE.UTF-8"}}, file).utf8);
    EXPECT_TRUE(styleIn({{"LC_CTYPE", "C.utf8@x"}, {"LANG", "C"}}, file).utf8);
    EXPECT_FALSE(styleIn({{"LC_ALL", "C"}, {"LANG", "C.UTF-8"}}, file).utf8);
    EXPECT_TRUE(styleIn({{"LC_ALL", ""}, {"LANG", "C.UTF-8"}}, file).utf8);
    EXPECT_FALSE(styleIn({{"LANG", "de_DE.ISO-8859-1"}}, file).utf8);
    std::fclose(file);
}

TEST(TerminalStyle, OfATerminalIsItsOwn) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    const char* const path = unlockpt(master) == 0 ? ptsname(master) : nullptr;
    std::FILE* const terminal = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (terminal == nullptr) {
        GTEST_SKIP() << "no terminal can be opened; is /dev/pts mounted?";
    }
    winsize size{};
    size.ws_col = 57;
    EXPECT_EQ(0, ioctl(master, TIOCSWINSZ, &size));
    EXPECT_EQ(57u, styleIn({{"COLUMNS", "132"}}, terminal).width);
    EXPECT_TRUE(styleIn({{"TERM", "xterm"}, {"NO_COLOR", ""}}, terminal).colour);
    EXPECT_FALSE(styleIn({{"TERM", "xterm"}, {"NO_COLOR", "0"}}, terminal).colour);
    EXPECT_FALSE(styleIn({{"TERM", "dumb"}}, terminal).colour);
    std::fclose(terminal);
    close(master);
}

}  // namespace
}  // namespace view
