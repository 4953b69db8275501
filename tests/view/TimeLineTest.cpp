#include "TimeLine.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "Sample.h"

namespace view {
namespace {

constexpr int64_t kMs = 1'000'000;
constexpr int64_t kDay = 86'400'000 * kMs;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

Call call(const std::string& operation, int64_t at, const std::string& thread, int32_t tid) {
    return {operation, thread, tid, at, {}, true};
}

// Begins at `start` ms of the session's clock, is flushed 100 ms later and removed after 110 ms.
Capture captureAt(int64_t start) {
    Capture capture = sampleCapture(1, "IMG");
    capture.registered = start * kMs;
    capture.flushed = (start + 100) * kMs;
    capture.removed = (start + 110) * kMs;
    return capture;
}

// "begin-end name!" in milliseconds for each span; "!" says that it has failed.
std::string show(const Lane& lane) {
    std::string shown;
    for (const Span& span : lane.spans) {
        shown += (shown.empty() ? "" : ", ") + std::to_string(span.begin / kMs) + "-" +
                 std::to_string(span.end / kMs) + " " + span.name + (span.hasFailed ? "!" : "");
    }
    return shown;
}

std::vector<std::string> show(const TimeLine& line, Lane::Kind kind) {
    std::vector<std::string> shown;
    for (const Lane& lane : line.lanes) {
        if (lane.kind == kind) {
            shown.push_back(show(lane));
        }
    }
    return shown;
}

TimeLine lineOf(const Capture& capture) {
    const auto line = timeLineOf(capture);
    EXPECT_TRUE(line);
    return line.value_or(TimeLine());
}

using Texts = std::vector<std::string>;

TEST(TimeLine, IsNothingWithoutATime) {
    Capture capture;
    capture.isFlushed = true;
    capture.stages = {{{1, "2request_to_vendor", 5}}};
    capture.nodes = {sampleNode("listed", 0, std::nullopt), sampleNode("never", kNan, kInfinity)};
    capture.calls = {{"updateUIInfo", "", 0, std::nullopt, {}, true}};
    EXPECT_FALSE(timeLineOf(capture));
}

TEST(TimeLine, HasTheCaptureUpToTheFlushAndAfterIt) {
    Capture capture = captureAt(5000);
    auto line = lineOf(capture);
    EXPECT_EQ(line.start, 5000 * kMs);
    EXPECT_EQ(line.length, 110 * kMs);
    EXPECT_EQ(show(line, Lane::Kind::kCapture),
              Texts{"0-100 to the flush, 100-110 after the flush"});

    capture.flushed.reset();
    capture.isFlushed = false;
    capture.findings = {{FindingKind::kNeverFlushed, "never flushed", "", {}, 5105 * kMs}};
    line = lineOf(capture);
    EXPECT_EQ(show(line, Lane::Kind::kCapture), Texts{"0-110 not flushed!"});
}

TEST(TimeLine, PutsStagesInTheOrderOfTimeAndLeavesOutWhatIsNoInstant) {
    Capture capture = captureAt(5000);
    capture.stages = {{{8, "also", 30},
                       {0, "none", -1},
                       {1, "vendor", 30},
                       {2, "back", 10},
                       {6, "difference", 20},
                       {7, "constant", 0},
                       {11, "constant", 0},
                       {11, "told", 40},
                       {4, "not known", 35, false},
                       {10, "at once", 0},
                       {3, "same", 30},
                       {12, "past", std::numeric_limits<int64_t>::max()},
                       {14, "negative", -5}}};
    EXPECT_EQ(show(lineOf(capture), Lane::Kind::kStages),
              Texts{"0-0 at once, 0-10 back, 10-30 vendor, 30-30 same, 30-30 also, 30-40 told"});
    capture.registered.reset();
    EXPECT_EQ(show(lineOf(capture), Lane::Kind::kStages), Texts{});
}

TEST(TimeLine, PutsNodesOnTheClockIfTheyLieNearTheCapture) {
    Capture capture = captureAt(500'000);
    capture.nodes = {sampleNode("late", 500'090, 500'120.0),
                     sampleNode("early", 500'010, 500'010.0)};
    auto line = lineOf(capture);
    EXPECT_FALSE(line.nodesStandApart);
    EXPECT_EQ(show(line, Lane::Kind::kNode), (Texts{"10-10 early", "90-120 late"}));
    EXPECT_EQ(line.length, 120 * kMs);

    capture.removed = 900'000 * kMs;
    const auto standApart = [&](double start) {
        capture.nodes = {sampleNode("node", start, std::nullopt)};
        return lineOf(capture).nodesStandApart;
    };
    EXPECT_TRUE(standApart(439'000));
    EXPECT_FALSE(standApart(441'000));
    EXPECT_FALSE(standApart(700'000));
    EXPECT_FALSE(standApart(959'000));
    EXPECT_TRUE(standApart(961'000));

    capture = captureAt(500'000);
    capture.nodes = {sampleNode("before", 499'990, 500'010.0)};
    line = lineOf(capture);
    EXPECT_EQ(line.start, 499'990 * kMs);
    EXPECT_EQ(show(line, Lane::Kind::kNode), Texts{"0-20 before"});
    EXPECT_EQ(show(line, Lane::Kind::kCapture),
              Texts{"10-110 to the flush, 110-120 after the flush"});
}

TEST(TimeLine, LeavesOutNodesThatAreOnlyListed) {
    Capture capture = captureAt(500'000);
    capture.nodes = {sampleNode("listed", 0, std::nullopt), sampleNode("ran", 500'010, 500'020.0)};
    EXPECT_EQ(show(lineOf(capture), Lane::Kind::kNode), Texts{"10-20 ran"});
    capture.nodes = {sampleNode("listed", 0, std::nullopt), sampleNode("ran", 10, 20.0)};
    EXPECT_EQ(show(lineOf(capture), Lane::Kind::kNode), Texts{"0-10 ran"});
}

TEST(TimeLine, LetsNodesOfAnotherClockBeginWithIt) {
    Capture capture = captureAt(500'000);
    capture.nodes = {sampleNode("a", 400'000, 400'030.0), sampleNode("b", 400'020, 400'200.0)};
    auto line = lineOf(capture);
    EXPECT_TRUE(line.nodesStandApart);
    EXPECT_EQ(show(line, Lane::Kind::kNode), (Texts{"0-30 a", "20-200 b"}));
    EXPECT_EQ(line.start, 500'000 * kMs);
    EXPECT_EQ(line.length, 200 * kMs);

    capture = Capture();
    capture.nodes = {sampleNode("alone", 40, 70.0)};
    line = lineOf(capture);
    EXPECT_TRUE(line.nodesStandApart);
    EXPECT_FALSE(line.start);
    EXPECT_EQ(line.nodesStart, 40 * kMs);
    EXPECT_EQ(show(line, Lane::Kind::kNode), Texts{"0-30 alone"});
}

TEST(TimeLine, MakesEmptySpansOfNodesWithoutAUsableCompletion) {
    Capture capture = captureAt(500'000);
    Node timedOut = sampleNode("timed out", 500'001, 500'009.0);
    timedOut.second = -1;
    capture.nodes = {timedOut,
                     sampleNode("negative", 500'002, 500'001.0),
                     sampleNode("open", 500'003, std::nullopt),
                     sampleNode("endless", 500'004, kInfinity),
                     sampleNode("huge", 500'005, 1e300),
                     sampleNode("a day", 500'006, 500'006.0 + 86'400'000),
                     sampleNode("no start", kNan, 500'007.0),
                     sampleNode("nothing", -kInfinity, kNan),
                     sampleNode("zero", 0, 500'008.0)};
    capture.findings = {{FindingKind::kNodeError, "", "negative", {}, {}},
                        {FindingKind::kNoCompletion, "", "endless", {}, {}},
                        {FindingKind::kNodeTimeOut, "", "no start", {}, {}},
                        {FindingKind::kVendorError, "", "open", {}, {}}};
    // "zero" starts before the clock's minute, so the nodes' clock is another.
    auto line = lineOf(capture);
    EXPECT_TRUE(line.nodesStandApart);
    capture.nodes.pop_back();
    line = lineOf(capture);
    EXPECT_EQ(show(line, Lane::Kind::kNode),
              (Texts{"1-9 timed out!", "2-2 negative!", "3-3 open", "4-4 endless!", "5-5 huge",
                     "6-6 a day", "7-7 no start!"}));
}

TEST(TimeLine, HasALaneForEachThreadInTheOrderOfTheirFirstCalls) {
    Capture capture = captureAt(5000);
    capture.calls = {call("second", 5050 * kMs, "", 7),    call("first", 5010 * kMs, "early", 7),
                     call("third", 5010 * kMs, "algo", 8), call("main", 5005 * kMs, "", 0),
                     call("hand", 5006 * kMs, "hand", 0),  call("far", kDay * 3 / 2, "far", 9)};
    capture.calls.push_back(call("last", 5060 * kMs, "renamed", 7));
    capture.calls[2].hadEffect = false;
    const auto line = lineOf(capture);
    EXPECT_EQ(show(line, Lane::Kind::kThread),
              (Texts{"5-5 main", "6-6 hand", "10-10 first, 50-50 second, 60-60 last",
                     "10-10 third!"}));
    EXPECT_EQ(line.lanes[3].name, "early");
    EXPECT_EQ(line.lanes[3].tid, 7);
}

TEST(TimeLine, MarksFailuresAndFlushesByTime) {
    Capture capture = captureAt(5000);
    capture.reports.resize(2);
    capture.reports[0].at = capture.flushed;
    capture.reports[1].at = 5115 * kMs;
    capture.findings = {{FindingKind::kErrorText, "error", "", {}, 5102 * kMs},
                        {FindingKind::kVendorError, "vendor", "", {}, 5050 * kMs},
                        {FindingKind::kVendorError, "without time", "", {}, {}},
                        {FindingKind::kLate, "no failure", "", {}, 5050 * kMs}};
    Texts marks;
    const auto line = lineOf(capture);
    for (const Mark& mark : line.marks) {
        marks.push_back(std::to_string(mark.at / kMs) + mark.name + (mark.isFailure ? "!" : ""));
    }
    EXPECT_EQ(marks, (Texts{"50vendor!", "100flush", "102error!", "115flush"}));
    EXPECT_EQ(line.length, 115 * kMs);
}

TEST(TimeLine, EndsOfTheNumbersDoNotOverflow) {
    Capture capture = captureAt(0);
    capture.registered = std::numeric_limits<int64_t>::max() - kDay / 2;
    capture.flushed = std::numeric_limits<int64_t>::min();
    capture.nodes = {sampleNode("huge", 9.1e12, 9.1e12 + 5), sampleNode("first", -9.1e12, 9.1e12)};
    const auto line = lineOf(capture);
    EXPECT_EQ(line.start, 110 * kMs);
    EXPECT_EQ(line.length, 0);
    EXPECT_EQ(show(line, Lane::Kind::kNode), Texts{"0-0 first"});
}

}  // namespace
}  // namespace view
