// Where the fields of a line end up.

#include "CaptureLog.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "InfoSynchronizerManager.h"
#include "RecordModel.h"

namespace {

using namespace camInfosync;  // NOLINT(google-build-using-namespace)

std::string call(const std::string& name, const std::string& fields) {
    return R"({"call":")" + name + R"(","image":"A",)" + fields + '}';
}

// Makes the call of each line twice on the manager, with image names ending in "#2".
void play(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        std::vector<replay::LineError> errors;
        const replay::CaptureStep step = replay::readCaptureLine(line, "#2", errors);
        ASSERT_TRUE(errors.empty()) << line;
        step.run(InfoSynchronizerManager::getInstance());
        step.run(InfoSynchronizerManager::getInstance());
    }
}

// What the reports of the scenarios do not show.
TEST(CaptureLine, GivesEachFieldToItsArgument) {
    play({R"({"call":"registerSnapshotRequestRecord","image":"A"})",
          call("updateFrameInfo",
               R"("frameNumber":4294967295,"timestamp":"2","camIds":[3,4],"frameExtra":5)"),
          call("updateRequestInfo",
               R"("reqValueA":-6,"reqValueB":7,"reqFlag":true,"reqIdsA":[8],)"
               R"("reqValue64":18446744073709551615,"expectedResultIds":[9,10])"),
          call("updateUIInfo", R"("requestType":-11,"camMode":12,"faceDetect":13,)"
                               R"("zoomRatio":7.038531e-26,"uiExtra":"\u0000x")"),
          call("updateAnchor3aInfo", R"("fstop":-0.0,"iso":14,"lux":"nan:0xffa00001",)"
                                     R"("exposureTime":-9223372036854775808)"),
          call("updateAnchorFrame", R"("anchorFrame":15)"),
          call("updateVndResultInfo", R"("vendorResultInfo":{"-7":"seven"})"),
          call("updateVndResultInfo", R"("resultId":8,"errorCode":"error_result")"),
          call("updateZuAlgoInfo",
               R"("zuAlgoInfo":{"algoList":["a"],"algoTimeA":{"a":"-inf"},)"
               R"("algoTimeB":[[{"hex":"ff00C3"},2]],)"
               R"("algoTimeC":{"c":5708990770823839207320493820740630171e-5}})"),
          call("updateNodeProcState", R"("node":"n","state":"GetOutputError")"),
          call("updateSnapshotTimeInfo", R"("stage":"1request_to_zuhal")"),
          call("updateSnapshotTimeInfo", R"("timeInfo":{"15shot_2_view":19})"),
          R"({"call":"updatePostProcInfo","postProcInfo":{"p":20}})"});
    const auto& queue = *InfoSynchronizerManager::getInstance().mRequestRecordQueue;
    const RequestRecord& record = *queue.records.at("A#2");
    RequestRecord expected = record;  // the rest is the scenarios'
    expected.frameInfo = {4294967295U, "2", {3, 4, 3, 4}, 5, "A#2"};
    SnapshotInfo& info = expected.snapshotInfo;
    info.requestType = static_cast<RequestType>(-11);
    info.uiExtra = std::string("\0x", 2);
    info.zoomRatio = 7.038531e-26F;  // another one if it is rounded to a double first
    info.exposureTime = INT64_MIN;
    info.fstop = -0.0F;
    const uint32_t luxBits = 0xffa00001U;
    std::memcpy(&info.lux, &luxBits, sizeof(luxBits));
    info.requestInfo = {-6, 7, 15, true, UINT64_MAX, {8}, {9, 10}};
    info.vendorResultInfo = {
            {-7, "seven"}, {8, "error_result"}, {9, "not_return"}, {10, "not_return"}};
    info.zuAlgoInfo = {{"a"},
                       {{"a", -INFINITY}},
                       {{std::string("\xff\0\xc3", 3), 2}},
                       {{"c", 5708990770823839207320493820740630171e-5}},
                       {{"n", "GetOutputError"}}};
    info.timeInfo = {{"15shot_2_view", 19}, {"1request_to_zuhal", -1}};
    EXPECT_EQ(fuzz::contentOf(record), fuzz::contentOf(expected));
    EXPECT_EQ((std::map<std::string, uint32_t>{{"p", 20}}), queue.postProcInfo);
    play({R"({"call":"unregisterSnapshotRequestRecord","image":"A"})"});
}

TEST(CaptureLine, MayLetAMinutePass) {
    std::vector<replay::LineError> errors;
    const replay::CaptureStep step = replay::readCaptureLine(R"({"sleepMs":60000})", "", errors);
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(std::chrono::minutes(1), step.sleep);
}

}  // namespace
