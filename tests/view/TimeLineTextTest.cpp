#include "TimeLineText.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "TerminalStyle.h"
#include "TerminalText.h"
#include "TimeLine.h"

namespace view {
namespace {

constexpr int64_t kMs = 1'000'000;

TimeLine sample() {
    TimeLine line;
    line.length = 100 * kMs;
    line.lanes = {{Lane::Kind::kCapture, "", 0, {{0, 90 * kMs, "", false, {}}}},
                  {Lane::Kind::kStages,
                   "",
                   0,
                   {{0, 20 * kMs, "", false, {}}, {20 * kMs, 40 * kMs, "", false, {}}}},
                  {Lane::Kind::kNode, "fusion", 0, {{50 * kMs, 80 * kMs, "", true, {}}}},
                  {Lane::Kind::kNode, "tone", 0, {{80 * kMs, 80 * kMs, "", false, {}}}},
                  {Lane::Kind::kThread,
                   "",
                   12,
                   {{100 * kMs, 100 * kMs, "", true, {}}, {100 * kMs, 100 * kMs, "", false, {}}}}};
    line.marks = {{50 * kMs, "", true, {}}, {90 * kMs, "", false, {}}};
    return line;
}

TEST(TimeLineText, DrawsEachLaneToScale) {
    EXPECT_EQ(
            "               0           50     100 ms\n"
            "    capture    =======================\n"
            "    stages     =====-----\n"
            "    fusion                 xxxxxxxx\n"
            "    tone                           |\n"
            "    thread 12                          x\n"
            "    errors                 !\n"
            "    flushes                          ^\n",
            timeLineText(sample(), {40, false, false}));
}

TEST(TimeLineText, TakesBlocksWhereThereAreAndColourForWhatFailed) {
    const std::string text = timeLineText(sample(), {40, true, true});
    EXPECT_NE(std::string::npos,
              text.find("\u2588\u2588\u2588\u2588\u2588\u2593\u2593\u2593\u2593\u2593"));
    EXPECT_NE(std::string::npos, text.find("\033[31m\u2592\u2592"));
    EXPECT_NE(std::string::npos, text.find("\033[36m\u2502\033[0m"));
    EXPECT_NE(std::string::npos, text.find("!\033[0m"));
}

TEST(TimeLineText, IsNeverWiderThanTheTerminal) {
    TimeLine line = sample();
    line.nodesStandApart = true;
    line.lanes[2].name = std::string(300, 'n') + "\x1b[2J";
    line.lanes.resize(100, line.lanes[2]);
    for (size_t width = 20; width < 200; width += 9) {
        std::istringstream lines(timeLineText(line, {width, true, false}));
        for (std::string each; std::getline(lines, each);) {
            EXPECT_GE(width, columnsOf(each)) << each;
            EXPECT_EQ(std::string::npos, each.find('\x1b'));
        }
    }
    EXPECT_NE(std::string::npos, timeLineText(line, {80, true, false}).find("and 60 lanes more"));
    EXPECT_NE(std::string::npos, timeLineText(line, {80, true, false}).find("clock of their own"));
}

TEST(TimeLineText, DrawsAMomentToo) {
    TimeLine line;
    line.lanes = {{Lane::Kind::kCapture, "", 0, {{0, 0, "", false, {}}}}};
    EXPECT_EQ(
            "             0                      0 ms\n"
            "    capture  |\n",
            timeLineText(line, {40, false, false}));
}

}  // namespace
}  // namespace view
