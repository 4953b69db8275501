#include "Compare.h"

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Captured.h"
#include "Difference.h"
#include "Tolerance.h"

namespace diff {
namespace {

constexpr Tolerance kTolerance{10, 5000};

std::string side(const std::optional<std::string>& text) {
    return text.value_or("-");
}

using Found = std::multiset<std::string>;

Found texts(const std::vector<Difference>& differences) {
    Found all;
    for (const Difference& each : differences) {
        all.insert(std::string(nameOf(each.kind)) + ' ' + each.item +
                   (each.node.empty() ? "" : "@" + each.node) + ' ' + side(each.a) + ' ' +
                   side(each.b) + (each.change ? ' ' + std::to_string(*each.change) : ""));
    }
    return all;
}

Found compare(const Captured& a, const Captured& b) {
    return texts(compareCaptures(a, b, kTolerance));
}

rows::NodeRow node(const std::string& name) {
    rows::NodeRow row;
    row.node = name;
    row.isListed = true;
    row.completion = 1;
    row.took = 20'000;
    row.timedOut = false;
    row.state = "none";
    return row;
}

// As a capture log tells it.
Captured known() {
    Captured capture;
    rows::CaptureRow& row = capture.row;
    row.name = "A";
    row.toFlush = 100'000;
    row.shotToShot = 200'000;
    row.isFlushed = row.isRemoved = true;
    row.vendorErrors = row.nodeTimeOuts = row.nodeErrors = row.errorTexts = 0;
    row.callsWithoutEffect = 0;
    row.reports = 1;
    row.algorithms = "merge:2,beauty";
    row.results = "40=error_none,41=error_none";
    row.stagesTold = "0,3";
    row.stages[3] = 50'000;
    capture.nodes = {node("merge"), node("beauty")};
    return capture;
}

TEST(Compare, FindsNothingWhereNothingDiffers) {
    Captured other = known();
    other.row.runId = "another";
    other.row.captureSeq = 7;
    other.row.source = "elsewhere";
    other.row.registered = rows::Nanoseconds{1};
    other.row.calls = 9;
    other.row.toFlush = 110'000;
    other.row.stages[3] = 55'000;
    other.nodes[0].took = 25'000;
    other.nodes[0].start = 7;
    EXPECT_EQ(Found(), compare(known(), other));
}

TEST(Compare, TellsWhatDiffersInEachColumn) {
    struct Case {
        void (*change)(rows::CaptureRow&);
        Found expected;
    };
    const Case cases[] = {
            {[](auto& row) { row.frameNumber = 4711; }, {"parameter frame_number - 4711"}},
            {[](auto& row) { row.timestamp = "5"; }, {"parameter timestamp - 5"}},
            {[](auto& row) { row.frameExtra = 1; }, {"parameter frame_extra - 1"}},
            {[](auto& row) { row.cameras = "0,2"; }, {"parameter cameras - 0,2"}},
            {[](auto& row) { row.requestType = 2; }, {"parameter request_type - 2"}},
            {[](auto& row) { row.camMode = 7; }, {"parameter cam_mode - 7"}},
            {[](auto& row) { row.faceDetect = 3; }, {"parameter face_detect - 3"}},
            {[](auto& row) { row.zoomRatio = 2.75; }, {"parameter zoom_ratio - 2.75"}},
            {[](auto& row) { row.uiExtra = ""; }, {"parameter ui_extra - "}},
            {[](auto& row) { row.reqValueA = 1; }, {"parameter req_value_a - 1"}},
            {[](auto& row) { row.reqValueB = 4; }, {"parameter req_value_b - 4"}},
            {[](auto& row) { row.anchorFrame = 5; }, {"parameter anchor_frame - 5"}},
            {[](auto& row) { row.reqFlag = false; }, {"parameter req_flag - false"}},
            {[](auto& row) { row.reqValue64 = rows::InText<uint64_t>{UINT64_MAX}; },
             {"parameter req_value64 - 18446744073709551615"}},
            {[](auto& row) { row.reqIdsA = "1"; }, {"parameter req_ids_a - 1"}},
            {[](auto& row) { row.expectedResultIds = "40"; },
             {"parameter expected_result_ids - 40"}},
            {[](auto& row) { row.fstop = 1.8; }, {"parameter fstop - 1.8"}},
            {[](auto& row) { row.iso = 100; }, {"parameter iso - 100"}},
            {[](auto& row) { row.lux = 0.25; }, {"parameter lux - 0.25"}},
            {[](auto& row) { row.exposureTime = rows::InText<int64_t>{-1}; },
             {"parameter exposure_time - -1"}},
            {[](auto& row) { row.algorithms = "merge:2"; },
             {"parameter algorithms merge:2,beauty merge:2"}},
            {[](auto& row) { row.results = "41=error_none,42=x"; },
             {"vendor_result 40 error_none -", "vendor_result 42 - x"}},
            {[](auto& row) { row.results = "40=timeout,41=error_none"; },
             {"vendor_result 40 error_none timeout"}},
            {[](auto& row) { row.errors = "a; b; a"; }, {"error a 0 2", "error b 0 1"}},
            {[](auto& row) { row.errors = "a", row.vendorErrors = 2; }, {"error a 0 1"}},
            {[](auto& row) { row.vendorErrors = 2; }, {"error vendor errors 0 2"}},
            {[](auto& row) { row.nodeTimeOuts = 2; }, {"error node time-outs 0 2"}},
            {[](auto& row) { row.nodeErrors = 2; }, {"error node errors 0 2"}},
            {[](auto& row) { row.errorTexts = 2; }, {"error error texts 0 2"}},
            {[](auto& row) { row.isFlushed = false; }, {"course flushed yes no"}},
            {[](auto& row) { row.isRemoved = false; }, {"course removed yes no"}},
            {[](auto& row) { row.reports = 2; }, {"course reports 1 2"}},
            {[](auto& row) { row.callsWithoutEffect = 1; }, {"course calls_without_effect 0 1"}},
            {[](auto& row) { row.stagesTold = "0,14"; }, {"stage 14 - told", "stage 03 told -"}},
            {[](auto& row) { row.stages[3] = 56'000; }, {"duration stage 03 50000 56000 6000"}},
            {[](auto& row) { row.toFlush = 80'000; }, {"duration to_flush 100000 80000 -20000"}},
            {[](auto& row) { row.shotToShot = 240'000; },
             {"duration shot_to_shot 200000 240000 40000"}},
    };
    for (const Case& each : cases) {
        Captured other = known();
        each.change(other.row);
        EXPECT_EQ(each.expected, compare(known(), other));
        EXPECT_EQ(each.expected.size(), compare(other, known()).size());
    }
}

TEST(Compare, TellsWhatDiffersInANode) {
    struct Case {
        void (*change)(rows::NodeRow&);
        Found expected;
    };
    const Case cases[] = {
            {[](auto& row) { row.state = "x"; }, {"node_state state@merge none x"}},
            {[](auto& row) { row.timedOut.reset(); }, {}},
            {[](auto& row) { row.timedOut = true; }, {"node_state timed_out@merge no yes"}},
            {[](auto& row) { row.completion.reset(); }, {"node_state completed@merge yes no"}},
            {[](auto& row) { row.isListed = false; }, {"node_state listed@merge yes no"}},
            {[](auto& row) { row.took = 26'000; }, {"duration node@merge 20000 26000 6000"}},
            {[](auto& row) { row.node = "a"; },
             {"node node@a - is there", "node node@merge is there -"}},
    };
    for (const Case& each : cases) {
        Captured other = known();
        each.change(other.nodes[0]);
        EXPECT_EQ(each.expected, compare(known(), other));
    }
    Captured timedOut = known();
    timedOut.nodes[0].timedOut = true;
    Captured untold = known();
    untold.nodes[0].timedOut.reset();
    EXPECT_EQ(Found(), compare(timedOut, untold));
}

TEST(Compare, SaysNothingOfWhatASideCannotKnow) {
    Captured logcat;
    logcat.row.name = "A";
    logcat.row.timestamp = "5";
    logcat.nodes = {node("merge"), node("beauty")};
    for (rows::NodeRow& each : logcat.nodes) {
        each.state.reset();
        each.timedOut.reset();
        each.isListed = false;
    }
    EXPECT_EQ(Found(), compare(known(), logcat));
    EXPECT_EQ(Found(), compare(logcat, known()));
    Captured other = logcat;
    other.row.timestamp = "6";
    EXPECT_EQ(Found{"parameter timestamp 5 6"}, compare(logcat, other));
}

Found compareSwitches(const std::map<std::string, std::string>& a,
                      const std::map<std::string, std::string>& b) {
    return texts(compareSessions({a, {}, {}}, {b, {}, {}}));
}

TEST(Compare, TellsOfSwitchesThatBothSidesKnow) {
    EXPECT_EQ(Found{"switch s present none"}, compareSwitches({{"s", "present"}}, {{"s", "none"}}));
    EXPECT_EQ(Found{"switch c on: a on: b"}, compareSwitches({{"c", "on: a"}}, {{"c", "on: b"}}));
    EXPECT_EQ(Found(), compareSwitches({{"s", "x"}}, {{"t", "y"}}));
    // Sources of two kinds, which give the same in other words.
    EXPECT_EQ(Found(), compareSwitches({{"c", "off: a"}, {"p", "not true"}, {"s", "none"}},
                                       {{"c", "off: b"}, {"p", "false"}}));
    EXPECT_EQ(Found{"switch c off: a on: a"},
              compareSwitches({{"c", "off: a"}, {"s", "none"}}, {{"c", "on: a"}}));
}

TEST(Compare, TellsOfFindingsThatBelongToNoCapture) {
    EXPECT_EQ(Found{"error findings of no capture 0 2"},
              texts(compareSessions({{}, 0, {}}, {{}, 2, {}})));
    EXPECT_EQ(Found(), texts(compareSessions({{}, {}, {}}, {{}, 2, {}})));
}

}  // namespace
}  // namespace diff
