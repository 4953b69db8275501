// What is found to be wrong with the calls of a log and with its captures.

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "CaptureObserver.h"
#include "Finding.h"
#include "PlayedLog.h"

namespace {

using played::Lines;
using played::play;
using view::FindingKind;

// What is found in a log of a capture A, whose lines begin with the third and end before a flush
// and the removal.
std::vector<std::string> findInCapture(const Lines& lines) {
    Lines all = {"register A", "frame A"};
    all.insert(all.end(), lines.begin(), lines.end());
    all.insert(all.end(), {"flush A", "unregister A"});
    return play(all).findings();
}

struct Case {
    Lines lines;
    Lines findings;
};

TEST(Findings, TellCallsWithoutEffectAndWhy) {
    const Case kCases[] = {
            {{"3a A", "ui A", "anchor A", "expect A []", "result A", "algo A", "node A", "state A",
              "stage A", R"(stage A "timeInfo":{"7anchor_time":0})"},
             {}},
            {{"3a B"}, {"3 unknown_name B: updateAnchor3aInfo: is not registered"}},
            {{"3a IMG_1", "register IMG_2", "3a IMG_1", "flush IMG_2", "unregister IMG_2"},
             {"3 unknown_name IMG_1: updateAnchor3aInfo: is not registered",
              "5 unknown_name IMG_1: updateAnchor3aInfo: is not registered; did you mean IMG_2?"}},
            {{"flush B"}, {"3 unknown_name B: snapshotRequestInfoFlush: is not registered"}},
            {{"unregister B"},
             {"3 unknown_name B: unregisterSnapshotRequestRecord: is not registered"}},
            {{"node B"}, {"3 unknown_name B: updateNodeProcTime: is not registered"}},
            {{"register A"},
             {"3 already_registered registerSnapshotRequestRecord: registered already, in line 1, "
              "and left as it is"}},
            {{R"(flush A "type":2)"},
             {"3 no_report_type snapshotRequestInfoFlush: type 2 reports nothing; 0 does"}},
            {{R"(stage A "stage":14)", R"(stage A "stage":15)"},
             {"4 stage_out_of_range updateSnapshotTimeInfo: stage 15 is none; they go from 0 to "
              "14"}},
            {{R"(stage A "timeInfo":{"7anchor_tim":1,"x":1})"},
             {"3 unknown_stage_name updateSnapshotTimeInfo: 7anchor_tim is no stage's name; did "
              "you mean 7anchor_time?; x is no stage's name"}},
            {{R"(result A "resultId":1,"errorCode":5)", R"(result A "resultId":1,"errorCode":-1)"},
             {"3 code_out_of_range updateVndResultInfo: error code 5 is none; they go from 0 to 4",
              "4 code_out_of_range updateVndResultInfo: error code -1 is none; they go from 0 to "
              "4"}},
            {{R"(state A "node":"hdr","state":5)"},
             {"3 state_out_of_range updateNodeProcState: state 5 is none; they go from 0 to 4"}},
            {{R"(error A "text":null)"},
             {"3 nothing_given updateSnapshotErrorInfo: null is given for the text"}},
            {{R"({"call":"request","type":1,"key":null})",
              R"({"call":"request","type":1,"key":"k","out":null})",
              R"({"call":"request","type":2,"record":null})", R"({"call":"request","type":9})"},
             {"3 nothing_given request: null is given for the key or the place for the result",
              "4 nothing_given request: null is given for the key or the place for the result",
              "5 nothing_given request: null is given for the record",
              "6 no_report_type request: type 9 does nothing; 0, 1 and 2 do"}},
            {{R"(anchor A "anchorFrame":1,"manager":"GetInstance")"},
             {"3 other_manager updateAnchorFrame: made on the manager of GetInstance(), which has "
              "no captures"}},
    };
    for (const Case& each : kCases) {
        EXPECT_EQ(each.findings, findInCapture(each.lines)) << testing::PrintToString(each.lines);
    }
}

TEST(Findings, TellWhatComesBeforeTheFrameAndAfterTheRemoval) {
    const std::string early = ": goes by the name that updateFrameInfo tells, and none has told it";
    const std::string removed = "was unregistered in line 8";
    const Lines findings = {"2 before_frame_info updateZuAlgoInfo" + early,
                            "3 before_frame_info updateNodeProcTime" + early,
                            "4 before_frame_info updateNodeProcState" + early,
                            "5 before_frame_info updateNodeProcState" + early,
                            "9 after_removal A: updateAnchorFrame: " + removed,
                            "10 after_removal A: snapshotRequestInfoFlush: " + removed,
                            "11 after_removal A: unregisterSnapshotRequestRecord: " + removed};
    EXPECT_EQ(findings, play({"register A", "algo A", "node A", "state A",
                              R"(state A "states":{"hdr":"OK"})", R"(algo A "zuAlgoInfo":{})",
                              "flush A", "unregister A", "anchor A", "flush A", "unregister A"})
                                .findings());
    // The empty name is that of the first frame which is not known.
    EXPECT_EQ((Lines{"1 never_flushed registered and never flushed",
                     "1 never_removed registered and never unregistered",
                     "2 node_time_out node hdr timed out"}),
              play({"register A", R"(node  "node":"hdr","first":5,"second":-1,"third":9)"})
                      .findings());
}

TEST(Findings, TellWhatACaptureLacks) {
    EXPECT_EQ((Lines{"1 never_flushed registered and never flushed",
                     "3 never_flushed registered and never flushed",
                     "3 never_removed registered and never unregistered"}),
              play({"register A", "unregister A", "register A"}).findings());
    EXPECT_EQ((Lines{"5 result_missing vendor result 2 never came",
                     "5 result_missing vendor result 3 never came"}),
              findInCapture({"expect A [1]", "3a A", "expect A [1,2,2,3]", "result A"}));
    EXPECT_EQ((Lines{"3 no_completion node hdr started and never completed"}),
              findInCapture({R"(algo A "zuAlgoInfo":{"algoTimeA":{"hdr":5,"listed":0}})"}));
}

TEST(Findings, TellErrorsByTheLinesThatCausedThem) {
    const Case kCases[] = {
            {{"result A", R"(result A "resultId":4294967295,"errorCode":3)"},
             {"4 vendor_error vendor result -1: error_result"}},
            {{R"(result A "vendorResultInfo":{"4":"error_none","5":"error_buffer"})"},
             {"3 vendor_error vendor result 5: error_buffer"}},
            {{"node A", R"(node A "node":"tone","first":5,"second":-1,"third":9)"},
             {"4 node_time_out node tone timed out"}},
            {{"state A", R"(state A "node":"tone","state":3)", "state A"},
             {"4 node_error node tone: FlushTask"}},
            {{R"(state A "states":{"hdr":"OK","tone":"GetInputError"})"},
             {"3 node_error node tone: GetInputError"}},
            {{R"(algo A "zuAlgoInfo":{"algoTimeB":{"hdr":-1},"algoState":{"tone":"FlushTask"}})"},
             {"3 node_time_out node hdr timed out", "3 node_error node tone: FlushTask"}},
            {{"error A", R"(error A "text":"")"}, {"3 error_text it broke", "4 error_text "}},
            {{R"({"call":"request","type":0,"record":{"errorInfo":["node process error","mine"],)"
              R"("frameInfo":{"imageName":"R"},"snapshotInfo":{"requestInfo":)"
              R"({"expectedResultIds":[7]},"zuAlgoInfo":{"algoState":{"hdr":"FlushTask"}}}}})"},
             {"3 node_error node hdr: FlushTask", "3 error_text mine",
              "3 result_missing vendor result 7 never came"}},
    };
    for (const Case& each : kCases) {
        EXPECT_EQ(each.findings, findInCapture(each.lines)) << testing::PrintToString(each.lines);
    }
}

TEST(Findings, TellWhatComesTooLateForTheReport) {
    const std::string late3a = "late updateAnchor3aInfo: too late for the report: ";
    const std::string lateNode = "late updateNodeProcTime: too late for the report: ";
    const Case kCases[] = {
            {{"flush A", "3a A"}, {"4 " + late3a + "iso is 5, reported as 0"}},
            {{"flush A", "3a A", "flush A"}, {}},
            {{"flush A", "3a A", R"(3a A "fstop":1e-9,"iso":0,"lux":0,"exposureTime":0)"}, {}},
            {{"flush A", R"(3a A "fstop":1,"iso":0,"lux":2,"exposureTime":3)"},
             {"4 " + late3a +
              "exposure_time is 3, reported as 0; fstop is 1.000000, reported as "
              "0.000000; lux is 2.000000, reported as 0.000000"}},
            {{"ui A", "flush A",
              R"(ui A "requestType":9,"camMode":5,"faceDetect":1,"zoomRatio":1.5,"uiExtra":"x")"},
             {"5 late updateUIInfo: too late for the report: cam_mode is 5, reported as 4; "
              "face_detect is 1, reported as 0"}},
            {{"flush A", R"(frame A "frameNumber":9,"timestamp":"2","camIds":[7],"frameExtra":0)"},
             {"4 late updateFrameInfo: too late for the report: timestamp is 2, reported as 1"}},
            {{"algo A", "flush A", R"(node A "node":"hdr","first":5.9,"second":6,"third":9)"},
             {"5 " + lateNode +
              "completion of hdr is 9, not reported; start of hdr is 5, reported "
              "as 0"}},
            {{"node A", "flush A", R"(node A "node":"hdr","first":5.9,"second":8,"third":9.9)"},
             {}},
            {{"node A", "flush A", R"(algo A "zuAlgoInfo":{"algoTimeA":{"hdr":5}})"},
             {"5 late updateZuAlgoInfo: too late for the report: completion of hdr is gone, "
              "reported as 9",
              "5 no_completion node hdr started and never completed"}},
            {{"flush A", "algo A"},
             {"4 late updateZuAlgoInfo: too late for the report: start of hdr is 0, not reported; "
              "start of tone is 0, not reported"}},
            {{"flush A", "3a A",
              R"({"call":"request","type":0,"record":{"frameInfo":)"
              R"({"imageName":"A"},"snapshotInfo":{"iso":5}}})"},
             {"4 " + late3a + "iso is 5, reported as 0"}},
            {{"flush A", "stage A", "state A", "anchor A", "result A", "error A"},
             {"8 error_text it broke"}},
    };
    for (const Case& each : kCases) {
        Lines lines = {"register A", "frame A"};
        lines.insert(lines.end(), each.lines.begin(), each.lines.end());
        lines.emplace_back("unregister A");
        EXPECT_EQ(each.findings, play(lines).findings()) << testing::PrintToString(each.lines);
    }
}

TEST(Findings, AreCountedBeyondTenOfAKind) {
    Lines lines(15, "3a IMG_2");
    lines.insert(lines.begin(), "register IMG_1");
    const auto& findings = play(lines).session.findings;
    ASSERT_EQ(11U, findings.size());
    const std::string says = "IMG_2: updateAnchor3aInfo: is not registered";
    EXPECT_EQ(says + "; did you mean IMG_1?", findings[9].text);
    EXPECT_EQ(1U, findings[9].calls);
    EXPECT_EQ(says + "; and 4 more like this", findings[10].text);
    EXPECT_EQ(5U, findings[10].calls);
    EXPECT_EQ(12U, findings[10].place.line);
}

TEST(Findings, AreKeptOfAThousandNamesAndCountedOfOthers) {
    Lines lines;
    for (int name = 0; name < 1020; ++name) {
        lines.push_back("anchor " + std::to_string(name));
    }
    const auto& findings = play(lines).session.findings;
    ASSERT_EQ(1011U, findings.size());
    EXPECT_EQ(10U, findings.back().calls);
}

TEST(Findings, NameTheLinesOfTheLogInEveryRound) {
    ReplayOptions twice;
    twice.repeat = 2;
    EXPECT_EQ((Lines{"1 unknown_name A: updateAnchor3aInfo: is not registered",
                     "1 unknown_name A#2: updateAnchor3aInfo: is not registered"}),
              play({"3a A"}, twice).findings());
}

// In one capture, calls meet what other calls have done.
TEST(Findings, TellWhichCallDidIt) {
    const std::string request = R"({"call":"request","type":0,"record":{"frameInfo":{"imageName":)";
    const std::string late = " late updateZuAlgoInfo: too late for the report: ";
    const std::pair<Lines, Lines> kCases[] = {
            {{"node A", "flush A", R"(algo A "zuAlgoInfo":{})", "algo A"},
             {"5" + late + "completion of hdr is gone, reported as 9",
              "6" + late + "start of hdr is 0, reported as 5; start of tone is 0, not reported"}},
            {{"expect A [7]", R"(result A "vendorResultInfo":{"7":"not_return"})", "flush A"},
             {"3 result_missing vendor result 7 never came"}},
            {{R"(stage A "timeInfo":{"7anchor_time":1,"x":1})",
              R"(stage A "timeInfo":{"1":1,"2":1,"3":1,"4":1,"5":1})", "flush A"},
             {"3 stage_left_out updateSnapshotTimeInfo: x is no stage's name",
              "4 unknown_stage_name updateSnapshotTimeInfo: 1 is no stage's name; 2 is no stage's "
              "name; 3 is no stage's name; 4 is no stage's name; and 1 more"}},
            {{request + R"("A"}}})"}, {"1 never_flushed registered and never flushed"}},
            {{"flush A", request + R"("B"},"errorInfo":["vendor result error"]}})",
              request + R"("C"},"hasError":true}})"},
             {"4 error_text vendor result error",
              "5 error_text hasError is set, and no error is told"}},
    };
    for (const auto& [lines, findings] : kCases) {
        Lines all = {"register A", "frame A"};
        all.insert(all.end(), lines.begin(), lines.end());
        all.emplace_back("unregister A");
        EXPECT_EQ(findings, play(all).findings()) << testing::PrintToString(lines);
    }
}

// How often a text stands in another one.
size_t count(const std::string& text, const std::string& part) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

// How many calls the findings of a kind are about.
size_t calls(const played::Shown& shown, FindingKind kind) {
    std::vector<view::Finding> findings = shown.session.findings;
    for (const view::Capture& capture : shown.captures) {
        findings.insert(findings.end(), capture.findings.begin(), capture.findings.end());
    }
    size_t found = 0;
    for (const view::Finding& finding : findings) {
        found += finding.kind == kind ? finding.calls : 0;
    }
    return found;
}

// The library warns of what has no effect, which the threads decide each time anew.
TEST(Findings, AgreeWithTheLibraryWhileThreadsRunFreely) {
    constexpr const char* kCalls[] = {"register", "3a", "flush", "anchor", "unregister"};
    Lines lines;
    std::map<std::string, size_t> made;
    for (unsigned i = 0; i < 12000; ++i) {
        std::string line = kCalls[(i / 12 + i % 4) % 5];
        made[line] += 1;
        line += ' ';
        line += static_cast<char>('A' + i / 4 % 3);
        line += R"( "thread":"t)";
        line += static_cast<char>('0' + i % 4);
        lines.push_back(line + '"');
    }
    testing::internal::CaptureStderr();
    const played::Shown shown = play(lines);
    const std::string warnings = testing::internal::GetCapturedStderr();
    const size_t twice = count(warnings, "had exist");
    EXPECT_EQ(twice, calls(shown, FindingKind::kAlreadyRegistered));
    EXPECT_EQ(made["register"] - twice, shown.captures.size());
    size_t useless = count(warnings, "can't find image");
    size_t reports = 0;
    for (const view::Capture& capture : shown.captures) {
        EXPECT_TRUE(capture.isRegistered);
        reports += capture.reports.size();
    }
    EXPECT_EQ(shown.session.reports, reports);
    useless += made["flush"] - reports;  // of the flushes
    EXPECT_EQ(useless,
              calls(shown, FindingKind::kUnknownName) + calls(shown, FindingKind::kAfterRemoval));
}

}  // namespace
