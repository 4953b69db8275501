// What a capture is told to hold.

#include <cstdint>
#include <future>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "OverlapService.h"
#include "PlayedLog.h"
#include "View.h"

namespace {

using played::Lines;
using played::play;
using played::Shown;

const char* const kHeader =
        R"({"format":"camInfosync capture log","version":"1.0","startMonotonic":100,)"
        R"("startReal":1000000})";

std::string number(std::optional<double> value) {
    std::ostringstream text;
    value ? text << *value : text << '-';
    return text.str();
}

// "NAME START SECOND COMPLETION STATE listed LINE" of each node.
Lines nodes(const view::Capture& capture) {
    Lines texts;
    for (const view::Node& node : capture.nodes) {
        texts.push_back(node.name + ' ' + number(node.start) + ' ' + number(node.second) + ' ' +
                        number(node.completion) + ' ' + (node.state.empty() ? "-" : node.state) +
                        (node.isListed ? " listed " : " ") + std::to_string(node.place.line));
    }
    return texts;
}

Lines values(const view::Capture& capture) {
    Lines texts;
    for (const view::Value& value : capture.values) {
        texts.push_back(std::to_string(static_cast<int>(value.group)) + ' ' + value.name + '=' +
                        value.text + (value.isNumber ? "" : " text"));
    }
    return texts;
}

Lines stages(const view::Capture& capture) {
    Lines texts;
    const auto known = capture.stages.value_or(std::vector<view::Stage>());
    for (const view::Stage& stage : known) {
        texts.push_back(stage.name + ' ' +
                        (stage.isKnown || stage.ms != -1 ? std::to_string(stage.ms) : "not known"));
    }
    return texts;
}

// "OPERATION THREAD TID AT LINE" of each call.
Lines calls(const view::Capture& capture) {
    Lines texts;
    for (const view::Call& call : capture.calls) {
        texts.push_back(call.operation + ' ' + call.thread + ' ' + std::to_string(call.tid) + ' ' +
                        (call.at ? std::to_string(*call.at) : "-") + ' ' +
                        std::to_string(call.place.line) + (call.hadEffect ? "" : " useless"));
    }
    return texts;
}

TEST(Content, IsThatOfTheRecord) {
    const Shown shown = play(
            {"register A", "frame A",
             R"(frame A "frameNumber":7,"timestamp":"t","camIds":[2],"frameExtra":3)",
             R"(ui A "requestType":2,"camMode":4,"faceDetect":-1,"zoomRatio":1.1,"uiExtra":"x")",
             R"(3a A "fstop":1.8,"iso":5,"lux":"inf","exposureTime":9)", "expect A [7,8]",
             "anchor A", "algo A", R"(algo A "algoList":["tone:2"])", "node A",
             R"(node A "node":"a","first":1,"second":-1,"third":2)",
             R"(result A "resultId":7,"errorCode":0)", R"(state A "states":{"late":"mine"})",
             "flush A", "unregister A", "register B", "unregister B"});
    ASSERT_EQ(2U, shown.captures.size());
    const view::Capture& capture = shown.captures[0];
    EXPECT_EQ((std::vector<uint32_t>{0, 2}), capture.cameras);
    EXPECT_EQ(Lines{"tone:2"}, capture.algorithms);
    EXPECT_EQ((Lines{"0 frameNumber=7", "0 timestamp=t text", "0 frameExtra=3", "1 reqValueA=0",
                     "1 reqValueB=0", "1 reqFlag=false text", "1 reqValue64=0", "1 reqIdsA= text",
                     "1 expectedResultIds=7, 8 text", "1 anchorFrame=1", "2 requestType=2",
                     "2 camMode=4", "2 faceDetect=-1", "2 zoomRatio=1.1", "2 uiExtra=x text",
                     "3 fstop=1.8", "3 iso=5", "3 lux=inf text", "3 exposureTime=9"}),
              values(capture));
    EXPECT_EQ((Lines{"tone 0 0 - none listed 0", "a 1 -1 2 - 11", "hdr 5 6 9 none 10",
                     "late - - - mine 0"}),
              nodes(capture));
    const auto results = capture.results.value_or(std::vector<view::VendorResult>());
    ASSERT_EQ(2U, results.size());
    EXPECT_EQ("error_none", results[0].text);
    EXPECT_EQ(12U, results[0].place.line);
    EXPECT_EQ("not_return", results[1].text);
    EXPECT_EQ(0U, results[1].place.line);
    EXPECT_EQ(Lines(), values(shown.captures[1]));
    EXPECT_EQ(std::vector<uint32_t>(), shown.captures[1].cameras);
}

TEST(Content, HasTheReportsAndTheCalls) {
    const Shown shown =
            play({"register A", "frame A", "flush A", R"(flush A "type":1)", "3a A", "flush A",
                  R"(3a A "fstop":0,"iso":6,"lux":0,"exposureTime":0,"thread":"cam")",
                  R"({"barrier":true})", "unregister A"});
    const view::Capture& capture = shown.captures.at(0);
    ASSERT_EQ(2U, capture.reports.size());
    EXPECT_EQ(3U, capture.reports[0].place.line);
    EXPECT_EQ(6U, capture.reports[1].place.line);
    EXPECT_EQ(8U, capture.reports[1].parameters.size());
    EXPECT_EQ((std::pair<std::string, std::string>("iso", "5")), capture.reports[1].parameters[0]);
    ASSERT_EQ(1U, capture.reports[1].events.size());
    EXPECT_EQ(R"({ "submit-request":{"pipeline_name":"A","timestamp":"1"}})",
              capture.reports[1].events[0].text);
    EXPECT_EQ((std::pair<int32_t, int32_t>(1022, 10000)), capture.reports[1].closing);
    EXPECT_EQ((Lines{"registerSnapshotRequestRecord  0 - 1", "updateFrameInfo  0 - 2",
                     "snapshotRequestInfoFlush  0 - 3", "snapshotRequestInfoFlush  0 - 4 useless",
                     "updateAnchor3aInfo  0 - 5", "snapshotRequestInfoFlush  0 - 6",
                     "updateAnchor3aInfo cam 0 - 7 useless",
                     "unregisterSnapshotRequestRecord  0 - 9"}),
              calls(capture));
    EXPECT_EQ(view::Clock::kNone, shown.session.clock);
    EXPECT_EQ(8U, shown.session.calls);
    EXPECT_EQ(3U, shown.session.flushes);
    EXPECT_EQ(2U, shown.session.reports);
    EXPECT_EQ(20U, shown.session.serviceCalls);
    EXPECT_EQ("true", shown.session.switches.at("persist.vendor.camera.camquill.supported"));
    EXPECT_EQ("present", shown.session.switches.at("service"));
    EXPECT_EQ("on: the service answers \"enabled\"", shown.session.switches.at("collection"));
}

TEST(Content, HasTheTimesOfARecording) {
    const auto recorded = [](const std::string& line, int64_t at) {
        return played::lineOf(line + R"( "at":)" + std::to_string(at) +
                              R"(,"n":1,"tid":5,"thread":"t")");
    };
    const Shown shown =
            play({kHeader, recorded("register A", 5'000'000), recorded("stage A", 9'000'000),
                  recorded("flush A", 10'000'000), recorded("flush A", 10'500'000),
                  recorded("unregister A", 11'000'000)});
    const view::Capture& capture = shown.captures.at(0);
    EXPECT_EQ(view::Clock::kMonotonic, shown.session.clock);
    EXPECT_EQ(999'900, shown.session.toReal);
    EXPECT_EQ(5'000'000, capture.registered);
    EXPECT_EQ(10'000'000, capture.flushed);
    EXPECT_EQ(11'000'000, capture.removed);
    EXPECT_EQ(10'000'000, capture.reports.at(0).at);
    EXPECT_EQ(Lines{"2request_to_vendor 4"}, stages(capture));
    EXPECT_EQ("updateSnapshotTimeInfo t 5 9000000 3", calls(capture).at(1));
}

TEST(Content, HasACallWithoutEffectIfNoneOfItsStagesIsKnown) {
    const Shown shown = play({"register A", R"(stage A "timeInfo":{"x":1})",
                              R"(stage A "timeInfo":{"x":1,"7anchor_time":1})"});
    EXPECT_EQ((Lines{"registerSnapshotRequestRecord  0 - 1",
                     "updateSnapshotTimeInfo  0 - 2 useless", "updateSnapshotTimeInfo  0 - 3"}),
              calls(shown.captures.at(0)));
}

TEST(Content, HasACallWithoutEffectIfCollectionIsOff) {
    const std::string on = R"("at":1,"thread":"t","tid":5,)";
    const std::string asked = on + R"("key":"snapshotInfoCollectEnable","answer":)";
    const Shown shown = play(
            {kHeader, R"({"n":1,)" + on + R"("call":"registerSnapshotRequestRecord","image":"A"})",
             R"({"answered":1,)" + asked + R"("enabled"})",
             R"({"n":2,)" + on + R"("call":"snapshotRequestInfoFlush","image":"A"})",
             R"({"answered":2,)" + asked + R"("no"})"});
    EXPECT_EQ((Lines{"registerSnapshotRequestRecord t 5 1 2",
                     "snapshotRequestInfoFlush t 5 1 4 useless"}),
              calls(shown.captures.at(0)));
}

// The desk's clock is nobody's business.
TEST(Content, HasNoTimesThatTheLogDoesNotTell) {
    const Shown shown = play({"register A", R"(stage A "stage":0)", R"(stage A "stage":1)",
                              R"(stage A "timeInfo":{"2request_to_vendor":7,"5request_to_post":8})",
                              R"(stage A "stage":3)", R"(stage A "stage":6)",
                              R"(stage A "stage":7)", R"(stage A "stage":11)",
                              R"(stage A "stage":4)", R"(stage A "timeInfo":{"7anchor_time":5})"});
    EXPECT_EQ((Lines{"1request_to_zuhal -1", "2request_to_vendor 7", "4result_to_fwk not known",
                     "5request_to_post not known", "7anchor_time 5", "8getbuffer_from_fwk 0",
                     "12post_proc_time 0", "14shot_2_gallery not known"}),
              stages(shown.captures.at(0)));
    EXPECT_FALSE(shown.captures[0].registered);
    EXPECT_EQ((Lines{"2request_to_vendor not known"}),
              stages(play({"register A", R"(stage A "at":9)"}).captures.at(0)));
    EXPECT_EQ((Lines{"2request_to_vendor not known"}),
              stages(play({R"(register A "at":9)", "stage A"}).captures.at(0)));
    EXPECT_EQ((Lines{"5request_to_post not known", "7anchor_time not known"}),
              stages(play({R"(register A "at":9)", R"(stage A "stage":4)",
                           R"(stage A "stage":6,"at":9)"})
                             .captures.at(0)));
}

TEST(Content, HasTwentyThousandCallsAtMost) {
    Lines lines(20'002, "anchor A");
    lines.insert(lines.begin(), "register A");
    lines.insert(lines.end(), {"flush A", "3a A", "unregister A"});
    testing::internal::CaptureStderr();
    const Shown shown = play(lines);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(20'000U, shown.captures.at(0).calls.size());
    EXPECT_EQ(Lines{"A: 6 more calls are not shown"}, shown.session.notes);
    EXPECT_NE(std::string::npos, said.find("A: 6 more calls are not shown\n"));
    EXPECT_EQ(Lines{"20005 late too late for the report: iso is 5, reported as 0"},
              shown.findings());
}

TEST(Content, IsHandedOnWhenACaptureIsOverAndNumberedAsItBegan) {
    const auto request = [](const std::string& name) {
        return R"({"call":"request","type":2,"record":{"frameInfo":{"imageName":")" + name +
               R"("},"snapshotInfo":{"iso":3}}})";
    };
    const Shown shown = play({"register C", "register A", "register B", "unregister A",
                              request("R"), request("B"), request("S")});
    Lines order;
    for (const view::Capture& capture : shown.captures) {
        order.push_back(std::to_string(capture.number) + capture.name +
                        (capture.isRegistered ? " registered" : "") +
                        (capture.isFlushed ? " flushed" : "") +
                        (capture.isRemoved ? " removed" : ""));
    }
    EXPECT_EQ((Lines{"2A registered removed", "4R flushed", "5S flushed", "1C registered",
                     "3B registered flushed"}),
              order);
    EXPECT_EQ("3", shown.captures[1].find("iso")->text);
    EXPECT_EQ(1U, shown.captures[1].reports.size());
}

// The service waits, while it receives a report, for two requests of a thread that a watched call
// must not make wait.
TEST(Content, IsWatchedWithoutKeepingTheServiceWaiting) {
    std::promise<void> secondRequest;
    Lines lines = {"register A", "frame A", R"(flush A "thread":"flush")",
                   R"(3a A "thread":"update")", R"({"sleepMs":50})"};
    for (const char* name : {"once", "twice"}) {
        lines.push_back(std::string(R"({"call":"request","type":0,"thread":"ask","record":)"
                                    R"({"frameInfo":{"imageName":")") +
                        name + R"("}}})");
    }
    const auto waitFor = [&](const ServiceCall& call) {
        if (call.kind != ServiceCall::Kind::kFinishReport) {
            return;
        }
        if (call.id == "A") {
            secondRequest.get_future().wait();
        } else if (call.id == "twice") {
            secondRequest.set_value();
        }
    };
    EXPECT_EQ(3U, play(lines, {}, waitFor).captures.size());
}

}  // namespace
