#include "TerminalText.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "TerminalStyle.h"

namespace view {
namespace {

const TerminalStyle kAscii{80, false, false};
const TerminalStyle kUtf8{80, true, false};

TEST(TerminalText, EscapesWhatMisleads) {
    EXPECT_EQ("a\\x1b[31m\\n\\\\", safe("a\x1b[31m\n\\"));
    EXPECT_EQ("\\u{202e}gpj\\u{202c}\\u{2066}\\u{2069}\\u{feff}\\u{200b}",
              safe("\u202Egpj\u202C\u2066\u2069\uFEFF\u200B"));
    EXPECT_EQ("\\u{2028}\\u{e0041}", safe("\u2028\U000E0041"));
    EXPECT_EQ("\u0645\u200C\u4E2D\U0001F4F7", safe("\u0645\u200C\u4E2D\U0001F4F7"));
}

TEST(TerminalText, KnowsTheWidthOfCharacters) {
    EXPECT_EQ(3u, columnsOf("abc"));
    EXPECT_EQ(4u, columnsOf("\u4E2D\u6587"));
    EXPECT_EQ(2u, columnsOf("e\u0301\u00FC"));
}

TEST(TerminalText, KeepsTheEndOfANameThatIsTooWide) {
    const std::string name = "BURST_20260502_183007_12";
    EXPECT_EQ(name, withoutMiddle(name, 24, kUtf8));
    EXPECT_EQ("BURST\u20262_183007_12", withoutMiddle(name, 17, kUtf8));
    EXPECT_EQ("BURST..2_183007_12", withoutMiddle(name, 18, kAscii));
    const std::string wide = "\u4E2D\u4E2D\u4E2D\u4E2De\u0301";
    EXPECT_EQ("\u4E2D\u2026\u4E2De\u0301", withoutMiddle(wide, 7, kUtf8));
    EXPECT_EQ("\u2026\u4E2De\u0301", withoutMiddle(wide, 6, kUtf8));
    for (size_t width = 0; width < 24; ++width) {
        EXPECT_EQ(width, columnsOf(withoutMiddle(name, width, kUtf8)));
        EXPECT_EQ(width, columnsOf(withoutMiddle(name, width, kAscii)));
        EXPECT_EQ(width, columnsOf(withoutEnd(name, width, kAscii)));
    }
    EXPECT_EQ("BURST_2\u2026", withoutEnd(name, 8, kUtf8));
}

TEST(TerminalText, ColoursOnlyIfTheStyleSaysSo) {
    EXPECT_EQ("x", inColour("x", Colour::kRed, kUtf8));
    EXPECT_EQ("\033[31mx\033[0m", inColour("x", Colour::kRed, {80, true, true}));
    EXPECT_EQ("x", inColour("x", Colour::kNone, {80, true, true}));
}

TEST(TerminalText, GivesTimesAsManyDigitsAsMakeSense) {
    EXPECT_EQ("0", milliseconds(-0.001));
    EXPECT_EQ("0.12", milliseconds(0.1234));
    EXPECT_EQ("4.5", milliseconds(4.5));
    EXPECT_EQ("10", milliseconds(9.996));
    EXPECT_EQ("31.3", milliseconds(31.26));
    EXPECT_EQ("100", milliseconds(99.96));
    EXPECT_EQ("-430", milliseconds(-429.7));
    EXPECT_EQ("100000", milliseconds(100000.4));
    EXPECT_EQ("1e+300", milliseconds(1e300));
    EXPECT_EQ("not known", milliseconds(std::optional<double>()));
    EXPECT_EQ("77121990.75", number(77121990.75));
    EXPECT_EQ("25798872.339", number(25798872.339408));
    EXPECT_EQ("0", number(-1e-9));
    EXPECT_EQ("1e+300", number(1e300));
    EXPECT_EQ("-inf", number(-INFINITY));
}

}  // namespace
}  // namespace view
