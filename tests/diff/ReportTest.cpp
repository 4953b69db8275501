#include "Report.h"

#include <stdlib.h>  // free

#include <cstdint>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "Difference.h"
#include "TerminalStyle.h"

namespace diff {
namespace {

Difference parameter(const char* name, const char* a, const char* b) {
    return {Kind::kParameter, name, {}, a, b, {}};
}

Difference duration(const char* node, int64_t a, int64_t b) {
    return {Kind::kDuration, "node", node, std::to_string(a), std::to_string(b), b - a};
}

void addAll(Report& report) {
    report.add(parameter("iso", "100", "200"), {"X", "X", 1, 2});
    report.add(parameter("iso", "100", "400"), {"Y", "Y", 2, 3});
    report.add(parameter("iso", "100", "400"), {"Z", "Z", 3, 4});
    report.add({Kind::kParameter, "fstop", {}, "1.8", {}, {}}, {"X\033", "X\033", 1, 2});
    report.add(duration("merge", 20'000, 30'000), {"X", "X", 1, 2});
    report.add(duration("merge", 20'000, 5'500), {"Y", "Y", 2, 3});
    report.add(duration("beauty", 1'000, 31'000), {"Z", "Z", 3, 4});
    report.add({Kind::kCapture, "capture", {}, {}, "is there", {}}, {"W", "W", 0, 9});
    report.add({Kind::kError, "late", {}, "0", "1", {}}, {"X", "X", 1, 2});
    report.add({Kind::kError, "late", {}, "2", "0", {}}, {"Y", "Y", 2, 3});
    report.add({Kind::kSwitch, "service", {}, "present", "none", {}}, {});
}

std::string written(Report& report, const Counts& counts) {
    char* text = nullptr;
    size_t size = 0;
    std::FILE* file = open_memstream(&text, &size);
    report.write(file, counts);
    std::fclose(file);
    std::string all(text, size);
    free(text);
    return all;
}

constexpr view::TerminalStyle kWide{100, false, false};
constexpr Counts kCounts{3, 3, 0, 1, 1};

TEST(TableReport, HasALineForEachWayInWhichCapturesDiffer) {
    TableReport report("good\033", "bad", kWide);
    addAll(report);
    EXPECT_EQ(
            "A  good\\x1b\n"
            "B  bad\n"
            "\n"
            "  difference           A        B           change  count  capture\n"
            "  switch service       present  none\n"
            "  capture              missing  is there                   W\n"
            "  late                 no       yes                        X\n"
            "  late                 2 times  no                         Y\n"
            "  iso                  100      400                     2  Y\n"
            "  iso                  100      200                        X\n"
            "  fstop                1.8      not told                   X\\x1b\n"
            "  time of node beauty  1 ms     31 ms       +30 ms         Z\n"
            "  time of node merge   20 ms    5.5 ms    -14.5 ms      2  Y\n"
            "\n"
            "3 captures compared, 3 of them differ, 1 only in B, 1 difference of the sessions\n",
            written(report, kCounts));
}

TEST(TableReport, HasFewLinesForManyWays) {
    TableReport report("A", "B", kWide);
    for (int i = 0; i < 250; ++i) {
        const std::string value = std::to_string(i % 240);
        report.add(parameter("iso", "x", value.c_str()), {"C" + std::to_string(i), {}, i, i});
    }
    const std::string text = written(report, {250, 250, 0, 0, 0});
    EXPECT_NE(std::string::npos, text.find("  iso         x      0           2  C0\n"
                                           "  iso         x      1           2  C1\n"
                                           "  iso         x      2           2  C2\n"
                                           "  iso         other  values    244\n"))
            << text;
}

TEST(TableReport, NamesWhatDiffersOfWhom) {
    TableReport report("A", "B", kWide);
    report.add({Kind::kVendorResult, "40", {}, "x", {}, {}}, {});
    report.add({Kind::kNodeState, "state", "merge", "OK", "x", {}}, {});
    report.add({Kind::kNode, "node", "merge", {}, "is there", {}}, {});
    report.add({Kind::kStage, "03", {}, "told", {}, {}}, {});
    report.add({Kind::kParameter, "ui_extra", {}, "", "x", {}}, {});
    report.add({Kind::kDuration, "to_flush", {}, "1000", "3000", 2000}, {});
    EXPECT_EQ(
            "A  A\n"
            "B  B\n"
            "\n"
            "  difference         A        B         change\n"
            "  vendor result 40   x        missing\n"
            "  node merge: state  OK       x\n"
            "  node merge         missing  is there\n"
            "  stage 03           told     not told\n"
            "  ui_extra           \"\"       x\n"
            "  time to_flush      1 ms     3 ms       +2 ms\n"
            "\n"
            "1 capture compared, 1 of them differs\n",
            written(report, {1, 1, 0, 0, 0}));
}

TEST(TableReport, SaysInOneLineThatNothingDiffers) {
    TableReport report("A", "B", kWide);
    EXPECT_EQ("1 capture compared, none differs\n", written(report, {1, 0, 0, 0, 0}));
}

TEST(Report, SummaryCountsEachSide) {
    EXPECT_EQ("2 captures compared, 1 of them differs, 3 only in A, 4 only in B",
              summaryOf({2, 1, 3, 4, 0}));
    EXPECT_EQ("0 captures compared, 3 only in A", summaryOf({0, 0, 3, 0, 0}));
}

TEST(JsonReport, HasALineForEachDifference) {
    JsonReport report;
    addAll(report);
    EXPECT_EQ(
            R"({"kind":"switch","item":"service","a":"present","b":"none"})"
            "\n"
            R"({"kind":"capture","item":"capture","capture":"W","capture_seq_b":9,"b":"is there"})"
            "\n"
            R"({"kind":"error","item":"late","capture":"X","capture_seq_a":1,"capture_seq_b":2,"a":"0","b":"1"})"
            "\n"
            R"({"kind":"error","item":"late","capture":"Y","capture_seq_a":2,"capture_seq_b":3,"a":"2","b":"0"})"
            "\n"
            R"({"kind":"parameter","item":"iso","capture":"X","capture_seq_a":1,"capture_seq_b":2,"a":"100","b":"200"})"
            "\n"
            R"({"kind":"parameter","item":"iso","capture":"Y","capture_seq_a":2,"capture_seq_b":3,"a":"100","b":"400"})"
            "\n"
            R"({"kind":"parameter","item":"iso","capture":"Z","capture_seq_a":3,"capture_seq_b":4,"a":"100","b":"400"})"
            "\n"
            R"({"kind":"parameter","item":"fstop","capture":"X\\x1b","capture_seq_a":1,"capture_seq_b":2,"a":"1.8"})"
            "\n"
            R"({"kind":"duration","item":"node","node":"beauty","capture":"Z","capture_seq_a":3,"capture_seq_b":4,"a_us":1000,"b_us":31000,"change_us":30000})"
            "\n"
            R"({"kind":"duration","item":"node","node":"merge","capture":"Y","capture_seq_a":2,"capture_seq_b":3,"a_us":20000,"b_us":5500,"change_us":-14500})"
            "\n"
            R"({"kind":"duration","item":"node","node":"merge","capture":"X","capture_seq_a":1,"capture_seq_b":2,"a_us":20000,"b_us":30000,"change_us":10000})"
            "\n"
            R"({"kind":"summary","compared":3,"differing":3,"only_in_a":0,"only_in_b":1,"differences":11})"
            "\n",
            written(report, kCounts));
}

}  // namespace
}  // namespace diff
