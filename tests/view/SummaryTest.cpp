#include "Summary.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "Sample.h"
#include "TerminalStyle.h"
#include "TerminalText.h"

namespace view {
namespace {

std::vector<Capture> samples() {
    std::vector<Capture> captures = {sampleCapture(2, "IMG_2"), sampleCapture(1, "IMG_1"),
                                     sampleCapture(3, "IMG_3")};
    captures[0].cameras = {0, 2};
    captures[0].nodes = {sampleNode("mfnr", 100, 530), sampleNode("tone", 530, 535.5)};
    captures[0].findings = {sampleFinding(FindingKind::kNeverRemoved, "never removed"),
                            sampleFinding(FindingKind::kVendorError, "result 40 is error_device")};
    captures[1].flushed = 1'431'000'000;
    captures[1].nodes = {sampleNode("endless", 0, INFINITY), sampleNode("back", 5, 2)};
    captures[1].findings = {sampleFinding(FindingKind::kLate, "updateUIInfo came late")};
    captures[2].flushed.reset();
    captures[2].nodes = {Node{}};
    captures[2].cameras = std::vector<uint32_t>();
    return captures;
}

std::string summaryOf(const std::vector<Capture>& captures, const std::string& sort,
                      const TerminalStyle& style) {
    Summary summary(sort, style);
    for (const Capture& capture : captures) {
        summary.add(capture);
    }
    return writtenBy([&](std::FILE* file) { summary.write(file); });
}

TEST(Summary, HasALineForEachCapture) {
    EXPECT_EQ(
            "  capture  cameras     flush ms  nodes  slowest   ms  findings\n"
            "  IMG_1    not known        431      2  back      -3  updateUIInfo came late\n"
            "  IMG_2    0,2               31      2  mfnr     430  result 40 is error_device +1\n"
            "  IMG_3    none       not known      1\n",
            summaryOf(samples(), "", {100, false, false}));
}

TEST(Summary, SortsTheWorstToTheTop) {
    const auto order = [](const char* sort) {
        std::vector<Capture> captures = samples();
        captures[2].findings.assign(2, sampleFinding(FindingKind::kLate, "late"));
        std::istringstream lines(summaryOf(captures, sort, {80, false, false}));
        std::string digits;
        for (std::string line; std::getline(lines, line);) {
            digits += line.substr(6, 1);
        }
        return digits.substr(1);
    };
    EXPECT_EQ("123", order(""));
    EXPECT_EQ("123", order("time"));
    EXPECT_EQ("231", order("findings"));
}

TEST(Summary, SortsByTheSlowestNodeWhereNothingElseIsKnown) {
    std::vector<Capture> captures = samples();
    for (Capture& capture : captures) {
        capture.registered.reset();
    }
    const std::string text = summaryOf(captures, "time", {80, false, false});
    EXPECT_EQ(std::string::npos, text.find("flush ms"));
    EXPECT_LT(text.find("IMG_2"), text.find("IMG_1"));
    captures[1].nodes = {sampleNode("slower", 100, 531)};
    const std::string other = summaryOf(captures, "time", {80, false, false});
    EXPECT_LT(other.find("IMG_1"), other.find("IMG_2"));
}

TEST(Summary, CountsFindingsWhereWordsDoNotFit) {
    std::vector<Capture> captures = samples();
    captures[0].name = "A_NAME_OF_TWENTYONE_2";
    EXPECT_NE(std::string::npos,
              summaryOf(captures, "", {80, false, false}).find("  A_NAME_OF_TWENTYONE_2  "));
    captures[1].findings[0].calls = 12;
    captures[2].cameras = std::vector<uint32_t>(40, 7);
    captures[0].name = "A_LONG_NAME_WITH_ITS_NUMBER_AT_THE_END_0000000000000000000000000000000012";
    for (size_t width = 20; width < 100; ++width) {
        std::istringstream lines(summaryOf(captures, "", {width, false, false}));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_GE(width, columnsOf(line)) << line;
        }
    }
    const std::string text = summaryOf(captures, "", {80, false, false});
    EXPECT_NE(std::string::npos, text.find("0000012  0,2 "));
    EXPECT_NE(std::string::npos, text.find("  1 failure +1\n"));
    EXPECT_NE(std::string::npos, text.find("  12 no effect\n"));
}

TEST(Summary, ColoursFailuresAndCallsWithoutEffect) {
    const std::string text = summaryOf(samples(), "", {100, false, true});
    EXPECT_NE(std::string::npos, text.find("\033[33m  IMG_1"));
    EXPECT_NE(std::string::npos, text.find("\033[31m  IMG_2"));
    EXPECT_NE(std::string::npos, text.find("\n  IMG_3"));
}

}  // namespace
}  // namespace view
