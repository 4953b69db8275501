// What is made of the library's lines, and of lines between them.

#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "Logs.h"
#include "Message.h"

namespace logcat {
namespace {

// messages.txt has logs, as logOf() takes them, each under its title; what is made of it follows.
TEST(Builder, MakesOfMessagesWhatTheTableSays) {
    std::ifstream table(MESSAGES);
    std::string title;
    std::vector<std::string> lines;
    std::string expected;
    size_t logs = 0;
    const auto check = [&] {
        ++logs;
        EXPECT_EQ(expected, textOf(readLogs({logOf(lines)}))) << title;
        lines.clear();
        expected.clear();
    };
    bool isExpected = false;
    for (std::string line; std::getline(table, line);) {
        if (line.substr(0, 3) == "== ") {
            if (!title.empty()) {
                check();
            }
            title = line;
            isExpected = false;
        } else if (line == "--") {
            isExpected = true;
        } else if (!isExpected) {
            lines.push_back(line);
        } else if (!line.empty()) {
            expected += line + '\n';
        }
    }
    check();
    EXPECT_EQ(20U, logs);
}

const char* const kSwitchedOn =
        "M f()camQuillSupported:1,  infoSyncCollectEnabled:1, cmdVal: enabled";

std::string submits(const std::string& name) {
    return R"(E requestInfo()submitReq { "submit-request":{"pipeline_name":")" + name +
           R"(","timestamp":"99"}})";
}

std::string starts(const std::string& node, const std::string& name) {
    return R"(E requestInfo()stime {")" + node + R"(":{"pipeline_name":")" + name +
           R"(","timestamp":"8","cam_id":"3","node_stage":"0"}})";
}

std::string flushed(const std::string& name) {
    return "M f()flush image " + name + "  snapshotRequestInfo to infosync module";
}

// As much of a line of the manager's as a log keeps.
std::string cutLine(const std::string& text) {
    const std::string line = "INFOSYNC InfoSynchronizerManager.cpp:1 " + text;
    return "m " + line.substr(0, kLongestMessage);
}

TEST(Builder, ShowsWhatWasCutAsCut) {
    const std::string name(2000, 'n');
    const std::string event =
            ("stime {\"" + std::string(1100, 'k')).substr(0, kLongestMessage - 50);
    const Seen seen = readLogs({logOf(
            {"M r()register image A, queue size: 1", kSwitchedOn, submits("A"),
             "E requestInfo()" + event, starts("whole", "A"), flushed("A"),
             cutLine("r()register image " + name), cutLine("u()can't find imageName: " + name),
             cutLine("u()unregister image " + name)})});
    ASSERT_EQ(2, seen.captures.size());
    EXPECT_EQ(
            "  cut_event @7: the log has the beginning of its name only\n"
            "  other_manager u@8: u: found no record; on the manager of GetInstance(), which has "
            "none?\n"
            "  never_flushed @9: registered and unregistered without a report in the log\n",
            textOf(seen.captures[0].findings));
    const view::Capture& capture = seen.captures[1];
    EXPECT_EQ(view::FindingKind::kCutEvent, capture.findings.at(1).kind);
    EXPECT_EQ(event.substr(8), capture.findings.at(1).subject);
    ASSERT_EQ(1, capture.reports.size());
    const std::vector<view::Report::Event>& events = capture.reports[0].events;
    EXPECT_TRUE(!events[0].isCut && events[1].isCut && !events[2].isCut);
}

TEST(Builder, KnowsACaptureByTheBeginningOfItsName) {
    const std::string name(945, 'n');
    const Seen seen =
            readLogs({logOf({cutLine("registerSnapshotRequestRecord()register image " + name),
                             "M u()unregister image " + name + ", queue size: 0"})});
    ASSERT_EQ(1, seen.captures.size());
    EXPECT_TRUE(seen.captures[0].isRegistered && seen.captures[0].isRemoved);
}

// Names are not escaped, and may look like what stands behind them.
TEST(Builder, TakesNamesAsTheyAre) {
    for (const char* format : {"threadtime", "brief", "long", "process"}) {
        for (const std::string name :
             {"A  frameinfo, queue size: 1", "A  NodeProcTime, queue size: 5",
              "x\", \"timestamp\":\"5\"}}", "two\nlines, queue size: 1",
              "1(2) I ZuAlgoEngine: ", "", "\r", "100%s\\x41", "can't find imageName: x"}) {
            const std::string size = ", queue size: 1";
            const Seen seen =
                    readLogs({logOf({"M r()register image " + name + size,
                                     "M u()update  image " + name + "  frameinfo" + size,
                                     "M n()update  image " + name + "  zuAlgoInfo" + size,
                                     kSwitchedOn, submits(name), starts("n", name), flushed(name),
                                     "M u()unregister image " + name + ", queue size: 0"},
                                    {format})});
            ASSERT_EQ(1, seen.captures.size()) << format << name;
            EXPECT_EQ(name, seen.captures[0].name);
            EXPECT_EQ(5, seen.captures[0].calls.size());
            EXPECT_EQ("n", seen.captures[0].nodes.at(0).name);
        }
    }
}

TEST(Builder, KeepsNoMessageOfAnyLength) {
    std::vector<std::string> lines(100, "m " + std::string(400, 'x'));
    lines.insert(lines.begin(), {"at once", "M updateUIInfo()can't find imageName: B"});
    EXPECT_GT(20'000, readLogs({logOf(lines)}).session.findings.at(0).text.size());
}

}  // namespace
}  // namespace logcat
