// What is made of the library's lines, and of lines between them.

#include "LogcatReader.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Input.h"
#include "LineScanner.h"
#include "LogLine.h"
#include "Logs.h"
#include "Message.h"

namespace logcat {
namespace {

// A log of one process, with a line for each millisecond.
class Log {
  public:
    explicit Log(std::vector<std::string> formats = {"threadtime", "epoch"},
                 int64_t seconds = 1000000000)
        : mFormats(std::move(formats)), mAt(seconds * kSecond) {}

    // Adds what one operation says on one thread.
    Log& on(int32_t tid) {
        mTid = tid;
        return *this;
    }
    Log& in(int32_t pid) {
        mPid = pid;
        return *this;
    }
    Log& atOnce() {
        mStep = 0;
        return *this;
    }
    Log& manager(const std::string& operation, const std::string& message) {
        return add(kManagerTag,
                   "INFOSYNC InfoSynchronizerManager.cpp:7 " + operation + "()" + message);
    }
    Log& engine(const std::string& operation, const std::string& message) {
        return add(kEngineTag, "INFOSYNC InfoCollector.cpp:7 " + operation + "()" + message);
    }
    Log& add(std::string_view tag, const std::string& message) {
        text += formatted(mFormats, {std::string(tag), message, mAt, mPid, mTid});
        mAt += mStep;
        return *this;
    }

    Log& registers(const std::string& name, int size) {
        return manager("registerSnapshotRequestRecord",
                       "register image " + name + ", queue size: " + std::to_string(size));
    }
    Log& removes(const std::string& name, int size) {
        return manager("unregisterSnapshotRequestRecord",
                       "unregister image " + name + ", queue size: " + std::to_string(size));
    }
    Log& updates(const std::string& operation, const std::string& name, const std::string& what,
                 int size) {
        return manager(operation, "update  image " + name + "  " + what +
                                          ", queue size: " + std::to_string(size));
    }
    Log& frame(const std::string& name, int size) {
        return updates("updateFrameInfo", name, "frameinfo", size);
    }
    Log& switchedOn() {
        return manager("snapshotRequestInfoFlush",
                       "camQuillSupported:1,  infoSyncCollectEnabled:1, cmdVal: enabled");
    }
    Log& submits(const std::string& name) {
        return engine("requestInfo", R"(submitReq { "submit-request":{"pipeline_name":")" + name +
                                             R"(","timestamp":"99"}})");
    }
    Log& event(const std::string& what, const std::string& node, const std::string& name,
               int64_t time) {
        return engine("requestInfo", what + R"( {")" + node + R"(":{"pipeline_name":")" + name +
                                             R"(","timestamp":")" + std::to_string(time) +
                                             R"(","cam_id":"3","node_stage":"0"}})");
    }
    Log& flushed(const std::string& name) {
        return manager("snapshotRequestInfoFlush",
                       "flush image " + name + "  snapshotRequestInfo to infosync module");
    }

    std::string text;

  private:
    std::vector<std::string> mFormats;
    int64_t mAt;
    int64_t mStep = 1000000;
    int32_t mPid = 12;
    int32_t mTid = 34;
};

// The findings of all captures and of the session.
std::string findingsOf(const Seen& seen) {
    std::string text;
    for (const view::Capture& capture : seen.captures) {
        text += capture.name + '\n' + textOf(capture.findings);
    }
    return text + "session\n" + textOf(seen.session.findings);
}

TEST(Builder, TellsWhichCallsHadNoEffect) {
    Log log;
    log.registers("IMG_1001", 1).updates("updateZuAlgoInfo", "IMG_1001", "zuAlgoInfo", 1);
    log.frame("IMG_1001", 1);
    log.manager("updateUIInfo", "can't find imageName: IMG_1010");
    log.manager("updateFrameInfo", "can't find imageName: IMG_1010").frame("IMG_1010", 1);
    log.updates("updateZuAlgoInfo", "else", "zuAlgoInfo", 1);
    log.updates("updateNodeProcTime", "IMG_1001", "NodeProcTime", 0);
    log.engine("emplace_back",
               "imageNmae IMG_1001 had exist in snapshot requestRecord queue, pl check it!");
    log.registers("IMG_1001", 1);
    log.manager("updateVndResultInfo", "code out of range: 7");
    log.manager("updateNodeProcState", "code out of range: -1");
    log.manager("updateSnapshotErrorInfo", "no error text for imageName: IMG_1001");
    log.engine("requestCmd", "no command key given");
    log.switchedOn().flushed("IMG_1001").switchedOn().submits("IMG_1001").flushed("IMG_1001");
    log.removes("IMG_1001", 0);
    log.manager("updateSnapshotTimeInfo", "can't find imageName: IMG_1001, type:4");
    log.engine("remove", "can't find imageNmae IMG_1001  in snapshot requestRecord queue!");
    log.removes("IMG_1001", 0).switchedOn().flushed("IMG_1002");
    const Seen seen = readLogs({log.text});
    EXPECT_EQ(R"(IMG_1001
  before_frame_info updateZuAlgoInfo@2: updateZuAlgoInfo: goes by the frame's name, which updateFrameInfo has not given yet
  other_manager updateNodeProcTime@8: updateNodeProcTime: found no record; on the manager of GetInstance(), which has none?
  already_registered registerSnapshotRequestRecord@9: registerSnapshotRequestRecord: registered already
  nothing_given updateSnapshotErrorInfo@13: updateSnapshotErrorInfo: no error text is given
  no_report_type snapshotRequestInfoFlush@16: snapshotRequestInfoFlush: reported nothing; type 0 does
session
  unknown_name updateUIInfo@4: IMG_1010: updateUIInfo: there is no record of that name; did you mean IMG_1001?
  unknown_name updateFrameInfo@5: IMG_1010: updateFrameInfo: there is no record of that name; did you mean IMG_1001?
  unknown_name updateZuAlgoInfo@7: else: updateZuAlgoInfo: there is no record of that name
  code_out_of_range updateVndResultInfo@11: updateVndResultInfo: error code 7 is none; they go from 0 to 4
  state_out_of_range updateNodeProcState@12: updateNodeProcState: state -1 is none; they go from 0 to 4
  nothing_given requestCmd@14: requestCmd: null is given where there must be more
  after_removal updateSnapshotTimeInfo@21: IMG_1001: updateSnapshotTimeInfo: its record has been removed
  after_removal unregisterSnapshotRequestRecord@22: IMG_1001: unregisterSnapshotRequestRecord: its record has been removed
  unknown_name snapshotRequestInfoFlush@25: IMG_1002: snapshotRequestInfoFlush: reported nothing: there is no record of that name; did you mean IMG_1001?
)",
              findingsOf(seen));
}

TEST(Builder, TellsWhatTheLogLacks) {
    Log log;
    log.registers("A", 1).switchedOn().event("stime", "lost", "A", 5).event("ctime", "end", "A", 6);
    log.frame("A", 1).registers("A", 1);
    log.add(kChattyTag, "uid=1047(camera) Thread-1 expire 12 lines");
    log.add(kChattyTag, "uid=1047(camera) Thread-1 identical 3 lines");
    log.in(99).add(kChattyTag, "uid=1047(camera) Thread-1 expire 4 lines").in(12);
    log.engine("remove", "can't find imageNmae A  in snapshot requestRecord queue!")
            .removes("A", 0);
    log.add(kChattyTag, "uid=1047(camera) expire 1 line");
    // A frame of the capture's may have been told before the log began.
    log.updates("updateZuAlgoInfo", "B", "zuAlgoInfo", 1);
    EXPECT_EQ(R"(A
  gap @3: the report's first event is missing from the log
  gap @3: the end of a flush is missing from the log
  no_completion lost@3: node lost has started, and its completion is not in the log
  gap end@4: node end: its start is missing from the log
  gap @6: registered again; the line of its removal is not in the log
A
  gap @7: the logger has dropped lines of this process: expire 12 lines
  gap @10: has no record any more; the line of its removal is not in the log
B
  never_removed @13: not unregistered by the end of the log
session
  gap @12: the logger has dropped lines of this process: expire 1 line
)",
              findingsOf(readLogs({log.text})));
}

TEST(Builder, TiesAVendorErrorOnlyToTheOneCaptureThereIs) {
    const auto error = [](Log& log) {
        log.manager("updateVndResultInfo", "had error error_device, do action!");
    };
    Log log;
    log.registers("second", 2);
    error(log);  // there is another, which the log does not tell of
    log.removes("first", 1).registers("third", 2);
    error(log);
    log.removes("third", 1);
    error(log);
    const Seen seen = readLogs({log.text});
    EXPECT_EQ(R"(first
third
  never_flushed @6: registered and never flushed
second
  never_flushed @1: registered and not flushed by the end of the log
  never_removed @1: not unregistered by the end of the log
  vendor_error @7: vendor result error_device
session
  vendor_error @2: vendor result error_device, of a capture that the line does not tell
  vendor_error @5: vendor result error_device, of a capture that the line does not tell
)",
              findingsOf(seen));
    EXPECT_FALSE(seen.captures[0].isRegistered);
}

TEST(Builder, ShowsWhatWasCutAsCut) {
    const std::string name(2000, 'n');
    const std::string node(1100, 'k');
    Log log;
    const auto cut = [](std::string message) { return message.substr(0, kLongestMessage - 50); };
    log.registers("A", 1).switchedOn().submits("A");
    log.engine("requestInfo", cut("stime {\"" + node)).event("stime", "whole", "A", 8).flushed("A");
    log.add(kManagerTag, ("INFOSYNC InfoSynchronizerManager.cpp:1 r()register image " + name)
                                 .substr(0, kLongestMessage));
    log.add(kManagerTag, ("INFOSYNC InfoSynchronizerManager.cpp:1 u()can't find imageName: " + name)
                                 .substr(0, kLongestMessage));
    log.add(kManagerTag, ("INFOSYNC InfoSynchronizerManager.cpp:1 u()unregister image " + name)
                                 .substr(0, kLongestMessage));
    const Seen seen = readLogs({log.text});
    ASSERT_EQ(2, seen.captures.size());
    EXPECT_EQ(
            "  cut_event @7: the log has the beginning of its name only\n"
            "  other_manager u@8: u: found no record; on the manager of GetInstance(), which has "
            "none?\n"
            "  never_flushed @9: registered and never flushed\n",
            textOf(seen.captures[0].findings));
    const view::Capture& capture = seen.captures[1];
    EXPECT_EQ(view::FindingKind::kCutEvent, capture.findings.at(1).kind);
    EXPECT_EQ(cut("stime {\"" + node).substr(8), capture.findings.at(1).subject);
    ASSERT_EQ(1, capture.reports.size());
    const std::vector<view::Report::Event>& events = capture.reports[0].events;
    EXPECT_TRUE(!events[0].isCut && events[1].isCut && !events[2].isCut);
}

TEST(Builder, KnowsACaptureByTheBeginningOfItsName) {
    const std::string name(945, 'n');
    const std::string line = "INFOSYNC InfoSynchronizerManager.cpp:7 ";
    Log log;
    log.add(kManagerTag, (line + "registerSnapshotRequestRecord()register image " + name)
                                 .substr(0, kLongestMessage));
    log.add(kManagerTag, line + "u()unregister image " + name + ", queue size: 0");
    const Seen seen = readLogs({log.text});
    ASSERT_EQ(1, seen.captures.size());
    EXPECT_TRUE(seen.captures[0].isRegistered && seen.captures[0].isRemoved);
}

TEST(Builder, TellsNodesAndValuesOfTheLastReport) {
    Log log;
    const auto submits = [&log](const std::string& timestamp) {
        log.engine("requestInfo", R"(submitReq { "submit-request":{"pipeline_name":"A",)"
                                  R"("timestamp":")" +
                                          timestamp + R"("}})");
    };
    log.registers("A", 1).switchedOn();
    submits("1");
    log.event("stime", "a", "A", 0).event("stime", "b", "A", 0).flushed("A").switchedOn();
    submits("2");
    log.event("stime", "a", "A", 3).event("ctime", "a", "A", 5).event("ctime", "a", "A", 6);
    log.event("stime", "b", "A", 0).event("ctime", "b", "A", 9).flushed("A").removes("A", 0);
    // Of this flush the log lacks the end.
    log.registers("B", 1).switchedOn().submits("B").removes("B", 0);
    const Seen seen = readLogs({log.text});
    EXPECT_EQ(R"(A
  gap a@11: node a: its start is missing from the log
B
  gap @18: the end of a flush is missing from the log
session
)",
              findingsOf(seen));
    const view::Capture& capture = seen.captures.at(0);
    EXPECT_EQ("2", capture.values.at(0).text);
    ASSERT_EQ(2, capture.nodes.size());
    EXPECT_EQ(6, capture.nodes[0].completion);
    EXPECT_EQ(9, capture.nodes[1].completion);
    EXPECT_FALSE(capture.nodes[1].isListed);
    EXPECT_TRUE(seen.captures.at(1).isFlushed);
}

TEST(Builder, KeepsProcessesAndThreadsApart) {
    Log log;
    log.on(1).frame("B", 1).on(2).registers("B", 1);  // two threads, one capture
    log.in(77).on(1).registers("B", 1).in(12);        // another process
    log.on(1).switchedOn().submits("B").on(2).submits("C").on(1).event("stime", "n", "B", 4);
    log.on(2).event("stime", "m\":{\"pipeline_name\":\"B", "C", 5).on(1).flushed("B");
    log.on(2).removes("B", 1);
    EXPECT_EQ(R"(1 B in 12: 1 8 9
  timestamp 99
  camIds[0] 3
  node n 4 -
  report of 2 events
  updateFrameInfo 1
  registerSnapshotRequestRecord 2
  snapshotRequestInfoFlush 1
  unregisterSnapshotRequestRecord 2
  no_completion n@7: node n has started, and its completion is not in the log
2 B in 77: 2 ? ?
  registerSnapshotRequestRecord 1
  never_flushed @3: registered and not flushed by the end of the log
  never_removed @3: not unregistered by the end of the log
3 C in 12: ? ? ?
  timestamp 99
  camIds[0] 3
  node m":{"pipeline_name":"B 5 -
  report of 2 events
  never_removed @6: not unregistered by the end of the log
  no_completion m":{"pipeline_name":"B@8: node m":{"pipeline_name":"B has started, and its completion is not in the log
session
)",
              textOf(readLogs({log.text})));
}

TEST(Builder, KnowsStagesByNameAndCountsCalls) {
    Log log;
    const auto stage = [&log](const std::string& name) {
        log.manager("updateSnapshotTimeInfo",
                    "imageName: A  timeinfo [stage " + name + " : interval %]lu");
    };
    log.registers("A", 1);
    for (const char* name : {"5request_to_post", "12post_proc_time", "1request_to_zuhal", "0", "16",
                             "1request_to_zuhal"}) {
        stage(name);
    }
    log.manager("updateUIInfo", "can't find imageName: B");
    const Seen seen = readLogs({log.text});
    const std::vector<view::Stage> stages =
            seen.captures.at(0).stages.value_or(std::vector<view::Stage>{});
    ASSERT_EQ(3, stages.size());
    EXPECT_TRUE(stages[0].number == 0 && stages[1].number == 4 && stages[2].number == 11);
    EXPECT_TRUE(stages[1].name == "5request_to_post" && !stages[1].isKnown);
    EXPECT_EQ(5, seen.captures[0].calls.size());  // stages of one call are in order
    EXPECT_EQ(6, seen.session.calls);
    EXPECT_EQ(0U, seen.session.flushes);
    EXPECT_EQ(std::vector<std::string>{}, seen.session.notes);
}

TEST(Builder, SaysOnceWhatIsSwitchedOffAndThatThereIsNoService) {
    Log log;
    const auto flush = [&](const std::string& state) {
        log.manager("snapshotRequestInfoFlush", state);
    };
    log.manager("InfoSynchronizerManager", "Construct Enter");
    log.manager("InfoSynchronizerManager", "Construct Eixt");
    flush("camQuillSupported:0,  infoSyncCollectEnabled:1, cmdVal: enabled");
    flush("camQuillSupported:0,  infoSyncCollectEnabled:0, cmdVal: ");
    flush("camQuillSupported:1,  infoSyncCollectEnabled:0, cmdVal: no");
    flush("camQuillSupported:1,  infoSyncCollectEnabled:0, cmdVal: no");
    log.registers("A", 1).switchedOn().submits("A").flushed("A");
    log.switchedOn().submits("A").flushed("A").removes("A", 0);
    const Seen seen = readLogs({log.text});
    EXPECT_EQ(R"(A
  no_service @9: reported to nobody: there is no service
session
  collection_off @3: collection is off: persist.vendor.camera.camquill.supported is not true
  collection_off @5: collection is off: the service answers "no" to snapshotInfoCollectEnable, not "enabled", and persist.vendor.camera.infoSyncCollect.forceEnabled is not true
)",
              findingsOf(seen));
    EXPECT_EQ("none", seen.session.switches.at("service"));
}

TEST(Builder, KnowsWhetherThereIsAServiceAndWhenTasksPiledUp) {
    const std::string pileUp = "[ThreadPool]: thread consume slowly or  blocking,task queue size 9";
    const std::pair<std::vector<std::string>, bool> kCases[] = {
            {{"Construct Enter", "Construct Eixt"}, true},
            {{"Construct Eixt"}, false},
            {{"Construct Enter", " mIntentAwareImpl is 0x1", "Construct Eixt"}, false},
    };
    const auto lacksService = [](const Log& log) {
        return readLogs({log.text}).session.switches.count("service") == 1;
    };
    for (const auto& [messages, expected] : kCases) {
        Log log;
        for (const std::string& message : messages) {
            log.manager("InfoSynchronizerManager", message);
        }
        EXPECT_EQ(expected, lacksService(log)) << messages.size();
    }
    EXPECT_TRUE(lacksService(Log().add(kOverlapTag, "Load() return...(2)")));
    const std::string twice = Log().engine("p", pileUp).engine("p", pileUp).text;
    EXPECT_EQ(std::vector<std::string>{"the worker pool's tasks have piled up 2 times, first in "
                                       "log1:1"},
              readLogs({twice}).session.notes);
}

// Names are not escaped, and may look like what stands behind them.
TEST(Builder, TakesNamesAsTheyAre) {
    for (const char* formats : {"threadtime", "brief", "long", "process"}) {
        for (const std::string name :
             {"A  frameinfo, queue size: 1", "A  NodeProcTime, queue size: 5",
              "x\", \"timestamp\":\"5\"}}", "two\nlines, queue size: 1",
              "1(2) I ZuAlgoEngine: ", "", "\r", "100%s\\x41", "can't find imageName: x"}) {
            Log log({formats});
            log.registers(name, 1).frame(name, 1).updates("n", name, "zuAlgoInfo", 1);
            log.switchedOn().submits(name);
            log.event("stime", "n", name, 4).flushed(name).removes(name, 0);
            const Seen seen = readLogs({log.text});
            ASSERT_EQ(1, seen.captures.size()) << formats << name;
            EXPECT_EQ(name, seen.captures[0].name);
            EXPECT_EQ(5, seen.captures[0].calls.size());
            EXPECT_EQ("n", seen.captures[0].nodes.at(0).name);
        }
    }
}

// Others use the engine's tag as well, and the log puts their lines anywhere.
TEST(Builder, LeavesOthersOutOfItsMessages) {
    Log log;
    log.atOnce().registers("A", 1).manager("updateUIInfo", "can't find imageName: B, type:2");
    log.add(kEngineTag, "an engine has begun");
    log.switchedOn().submits("A").event("stime", "n", "A", 1).add(kEngineTag, "and has ended");
    log.event("ctime", "n", "A", 2).engine("requestInfo", "stime {\"cut");
    log.on(9).add(kEngineTag, "elsewhere").on(34).flushed("A").removes("A", 0);
    log.manager("updateUIInfo", "can't find imageName: C").text += "\n";
    log.add(kManagerTag, "neither does this belong to it");
    const Seen seen = readLogs({log.text});
    EXPECT_EQ(R"(A
  cut_event cut@9: node cut: the log has the beginning of the event only
session
  unknown_name updateUIInfo@2: B, type:2: updateUIInfo: there is no record of that name
  unknown_name updateUIInfo@13: C: updateUIInfo: there is no record of that name
)",
              findingsOf(seen));
    EXPECT_EQ(2, seen.captures.at(0).nodes.at(1).completion);
}

// A request() reports without the lines of a flush.
TEST(Builder, TakesReportsThatNoFlushAskedFor) {
    Log log;
    log.on(1).registers("A", 1).on(2).submits("A").submits("A").on(1).removes("A", 0);
    const Seen seen = readLogs({log.text});
    ASSERT_EQ(1, seen.captures.size());
    EXPECT_EQ(2, seen.captures[0].reports.size());
    EXPECT_FALSE(seen.captures[0].isFlushed);
    EXPECT_EQ("A\nsession\n", findingsOf(seen));
}

TEST(Builder, KeepsNoMessageOfAnyLength) {
    Log log;
    log.atOnce().manager("updateUIInfo", "can't find imageName: B");
    for (int line = 0; line < 100; ++line) {
        log.add(kManagerTag, std::string(400, 'x'));
    }
    EXPECT_GT(20'000, readLogs({log.text}).session.findings.at(0).text.size());
}

TEST(Reader, GoesOnFromOneLogToTheNextAndSaysWhatTimesLack) {
    Log first({"threadtime"});
    first.registers("A", 1);
    Log second({"threadtime", "monotonic"}, 4711);
    second.submits("A").flushed("A");
    Log third({"brief"});
    third.removes("A", 0);
    const std::string other = "11-21 10:15:00.123  1500  1620 D WindowManager: relayout: 1\n";
    const Seen seen = readLogs(
            {first.text, "--------- beginning of main\n" + other, second.text, third.text});
    ASSERT_EQ(1, seen.captures.size());
    EXPECT_EQ("1 A in 12: ", textOf(seen.captures[0]).substr(0, 11));
    EXPECT_TRUE(seen.captures[0].registered && !seen.captures[0].flushed);
    EXPECT_EQ(3, seen.captures[0].calls.back().place.source);
    EXPECT_EQ(view::Clock::kReal, seen.session.clock);
    EXPECT_EQ((std::vector<std::string>{
                      "log1: its lines have no year; the log's date gives it",
                      "log1: its lines have no time zone; what is called UTC is the phone's time",
                      "log2: there are no lines of the library",
                      "log3: some of its times are of another clock than the first, and left out",
                      "log4: some of its lines have no time"}),
              seen.session.notes);
}

TEST(Reader, TakesABugReportByItsSections) {
    Log printable({"threadtime", "printable", "uid"}, 1767225600);
    printable.registers("a\\b\t", 1);
    Log plain({"threadtime"}, 1767225600);
    plain.registers("a\\\\b", 2);
    const std::string log =
            "========================================================\n"
            "== dumpstate: 2026-03-01 10:15:00\n"
            "========================================================\n"
            "------ SYSTEM LOG (logcat -v threadtime -v printable -v uid -d *:v) ------\n" +
            printable.text + "------ 0.1s was the duration of 'SYSTEM LOG' ------\n" +
            "------ OTHER LOG (logcat -d) ------\n" + plain.text +
            "------ LAST LOG (logcat -v printable) ------\n";
    const Seen seen = readLogs({log, plain.text}, 0);
    ASSERT_EQ(3, seen.captures.size());
    EXPECT_EQ("a\\\\b", seen.captures[0].name);
    EXPECT_EQ("a\\b\t", seen.captures[1].name);
    EXPECT_EQ("a\\\\b", seen.captures[2].name);
    EXPECT_EQ(1767225600 * kSecond, seen.captures[1].registered.value_or(0) / kSecond * kSecond);
}

TEST(Reader, RefusesWhatIsNoLogcat) {
    Keeper keeper;
    LogcatReader reader(keeper);
    for (const std::string& text : {std::string("{\"call\":1}\n"), std::string(3000, '\n'),
                                    std::string(size_t{1} << 21, 'x')}) {
        TextInput input(text);
        EXPECT_THROW(reader.read(input, "log"), std::runtime_error);
    }
    // A log may begin with much else.
    TextInput late(std::string(3000, '\n') + Log().registers("A", 1).text);
    reader.read(late, "log");
    reader.finish();
    EXPECT_EQ(3001, keeper.seen.captures.at(0).calls.at(0).place.line);
}

TEST(Reader, TakesWhatADeskPrints) {
    const std::string origin = "INFOSYNC InfoSynchronizerManager.cpp:110 r()";
    const std::string liblog = "kelo-InfoSynchronizer I 11-21 20:23:58 22092 22096 " + origin +
                               "register image A, queue size: 1\r\n";
    const std::string debug = "I " + origin + " register image B, queue size: 1\n";
    const Seen seen = readLogs({"features_mgr_handle = 0x0\n" + liblog + debug});
    ASSERT_EQ(2, seen.captures.size());
    EXPECT_EQ("A", seen.captures[0].name);
    EXPECT_EQ("22092", seen.captures[0].process);
    ASSERT_EQ(4, seen.session.notes.size());
    EXPECT_EQ("log1: its times are whole seconds", seen.session.notes[2]);
    EXPECT_EQ("", seen.captures[1].process);
}

// The lines of a text with the needle, by their numbers.
std::vector<uint64_t> scan(const std::string& text, size_t piece, std::string_view needle) {
    TextInput input(text, 0, piece);
    LineScanner scanner(input, {needle, "never"});
    std::vector<uint64_t> numbers;
    for (Line line{}; scanner.nextWithNeedle(line);) {
        EXPECT_NE(std::string_view::npos, line.text.find(needle));
        numbers.push_back(line.number);
    }
    return numbers;
}

TEST(LineScanner, FindsLinesWhereverTheInputIsDivided) {
    const std::string tooLong(LineScanner::kLongestLine + 1, 'x');
    const std::string longest = std::string(LineScanner::kLongestLine - 2, 'y') + "ab";
    std::string text = "ab\n\nxx ab\n" + tooLong + "ab\nab" + tooLong + "\nab ab\n" + longest +
                       "\n" + std::string(size_t{3} << 20, 'z') + "ab\nab";
    for (const size_t piece : {size_t{1}, size_t{4095}, size_t{1} << 20, SIZE_MAX}) {
        EXPECT_EQ((std::vector<uint64_t>{1, 3, 6, 7, 9}), scan(text, piece, "ab")) << piece;
    }
    text += '\n';
    EXPECT_EQ((std::vector<uint64_t>{1, 3, 6, 7, 9}), scan(text, SIZE_MAX, "ab"));
}

}  // namespace
}  // namespace logcat
