#include "CaptureReport.h"

#include <cmath>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "Sample.h"
#include "TerminalStyle.h"
#include "TimeLine.h"
#include "View.h"

namespace view {
namespace {

const TerminalStyle kStyle{80, false, false};

Session sampleSession() {
    Session session;
    session.sources = {"night.jsonl"};
    session.clock = Clock::kMonotonic;
    return session;
}

Capture nightShot() {
    Capture capture = sampleCapture(2, "NIGHT_2");
    capture.process = "cameraserver";
    capture.cameras = {0, 4};
    capture.algorithms = {"denoise:12", "fusion"};
    capture.stages = {
            {0, "1request_to_zuhal", -1}, {1, "2request_to_vendor", 4}, {5, "6x", -1, false}};
    capture.values = {{Value::Group::kFrame, "frame number", "53", true},
                      {Value::Group::kUserInterface, "ui extra", "tripod\n", false},
                      {Value::Group::kAutomatics, "iso", "6400", true}};
    capture.nodes = {sampleNode("denoise", 77121990.75, 77125902.25),
                     sampleNode("fusion", 77125903, 0), Node{}};
    capture.nodes[1].second = -1;
    capture.nodes[1].completion.reset();
    capture.nodes[2].name = "tone";
    capture.nodes[2].start = 0;
    capture.nodes[2].state = "none";
    capture.results = {{61, "error_none", {}}, {63, "error_request", {}}};
    capture.findings = {
            sampleFinding(FindingKind::kVendorError, "vendor result 63: error_request", 21)};
    Report report;
    report.at = capture.flushed;
    report.place = {0, 23};
    report.parameters = {{"iso", "6400"}, {"face_detect", "0"}};
    report.events = {{"{ \"submit-request\":{}}", false}, {"{\"fusion\":{", true}};
    report.closing = {1022, 10000};
    capture.reports = {report};
    return capture;
}

TEST(CaptureReport, HasAllThatIsKnown) {
    EXPECT_EQ(
            "capture 2: NIGHT_2, process cameraserver\n"
            "  registered at 1.000 s since the start, flushed after 31 ms, removed after 40 ms\n"
            "  findings\n"
            "    night.jsonl:21  vendor result 63: error_request\n"
            "  frame\n"
            "    frame number  53\n"
            "    cameras       0, 4\n"
            "  request: not known\n"
            "  user interface\n"
            "    ui extra  tripod\\n\n"
            "  3A\n"
            "    iso  6400\n"
            "  algorithms: denoise:12, fusion\n"
            "  stages\n"
            "    1request_to_zuhal\n"
            "    2request_to_vendor  4 ms\n"
            "    6x                  not known\n"
            "  nodes\n"
            "    node           start       second   completion    took ms  state\n"
            "    denoise  77121990.75  77121991.75  77125902.25       3912  OK\n"
            "    fusion      77125903    timed out    not known  not known  OK\n"
            "    tone               0    not known    not known    not run  none\n"
            "  vendor results\n"
            "    61  error_none\n"
            "    63  error_request\n"
            "  report 1 after 31 ms, night.jsonl:23\n"
            "  parameters\n"
            "    iso          6400\n"
            "    face_detect  0\n"
            "  events\n"
            "    1  { \"submit-request\":{}}\n"
            "    2  {\"fusion\":{... (cut by the log)\n"
            "  closed by finishReport(1022, 10000)\n"
            "\n",
            captureReport(nightShot(), sampleSession(), std::nullopt, kStyle));
}

TEST(CaptureReport, SaysWhatIsNotKnown) {
    Capture capture;
    capture.number = 1;
    capture.reports = {Report{}};
    EXPECT_EQ(
            "capture 1: (no name)\n"
            "  registration not known, flush not known, removal not known\n"
            "  frame\n"
            "    cameras  not known\n"
            "  request: not known\n"
            "  user interface: not known\n"
            "  3A: not known\n"
            "  algorithms: not known\n"
            "  stages: not known\n"
            "  nodes: not known\n"
            "  vendor results: not known\n"
            "  report 1\n"
            "  parameters: not known\n"
            "  events: none\n"
            "  closed by: not known\n"
            "\n",
            captureReport(capture, Session(), std::nullopt, kStyle));
}

TEST(CaptureReport, DeniesNothingThatMayBeInMissingLines) {
    Capture capture = sampleCapture(1, "IMG_1");
    capture.isFlushed = capture.isRemoved = false;
    const auto life = [&] {
        const std::string text = captureReport(capture, Session(), std::nullopt, kStyle);
        return text.substr(text.find("registered"), text.find("  f") - text.find("registered"));
    };
    EXPECT_EQ("registered, not flushed, not removed\n", life());
    capture.findings = {sampleFinding(FindingKind::kGap, "")};
    EXPECT_EQ("registered, flush not known, removal not known\n", life());
}

TEST(CaptureReport, SaysWhatIsEmpty) {
    Capture capture = sampleCapture(1, "IMG_1");
    capture.cameras.emplace();
    capture.algorithms.emplace();
    capture.stages.emplace();
    capture.results.emplace();
    const std::string text = captureReport(capture, Session(), std::nullopt, kStyle);
    for (const char* line : {"    cameras  none\n", "  algorithms: none\n", "  stages: none\n",
                             "  nodes: none\n", "  vendor results: none\n"}) {
        EXPECT_NE(std::string::npos, text.find(line)) << line;
    }
    capture.stages = {{0, "1request_to_zuhal", 44}, {1, "2request_to_vendor", -1}};
    EXPECT_NE(std::string::npos,
              captureReport(capture, Session(), std::nullopt, kStyle)
                      .find("    1request_to_zuhal   44 ms\n    2request_to_vendor  -1 ms\n"));
}

TEST(CaptureReport, LetsNoLongNamePushValuesAside) {
    Capture capture = sampleCapture(1, "IMG_1");
    capture.values = {{Value::Group::kRequest, "short", "1", true},
                      {Value::Group::kRequest, std::string(41, 'n'), "2", true}};
    EXPECT_NE(std::string::npos,
              captureReport(capture, Session(), std::nullopt, kStyle)
                      .find("    short  1\n    " + std::string(41, 'n') + "  2\n"));
}

TEST(CaptureReport, DrawsTheTimeLineAndColoursFailures) {
    const Capture capture = nightShot();
    TimeLine timeLine;
    timeLine.lanes = {{Lane::Kind::kCapture, "", 0, {{0, 0, "", false, {}}}}};
    const std::string text = captureReport(capture, sampleSession(), timeLine, {80, false, true});
    EXPECT_NE(std::string::npos, text.find("  time line\n"));
    EXPECT_NE(std::string::npos, text.find("    capture  |"));
    EXPECT_EQ(0u, text.find("\033[31mcapture 2: NIGHT_2\033[0m"));
    EXPECT_NE(std::string::npos, text.find("\033[31m    fusion "));
}

TEST(CaptureReport, TellsTheTimeOfDayIfItIsKnown) {
    Session session = sampleSession();
    Capture capture = sampleCapture(1, "IMG_1");
    const auto registered = [&] {
        const std::string text = captureReport(capture, session, std::nullopt, kStyle);
        return text.substr(text.find("registered"),
                           text.find(", flushed") - text.find("registered"));
    };
    session.toReal = 1'777'746'607'123'000'000 - 1'000'000'000;
    EXPECT_EQ("registered at 2026-05-02 18:30:07.123 UTC", registered());
    session.toReal = INT64_MAX;
    EXPECT_EQ("registered at 1.000 s since the start", registered());
    session.clock = Clock::kReal;
    capture.registered = -1'000'000;
    EXPECT_EQ("registered at 1969-12-31 23:59:59.999 UTC", registered());
    session.clock = Clock::kNone;
    EXPECT_EQ("registered", registered());
}

}  // namespace
}  // namespace view
