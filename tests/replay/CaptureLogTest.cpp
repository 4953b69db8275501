// Where the fields of a line end up.

#include "CaptureLog.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "InfoSynchronizerManager.h"

namespace {

using camInfosync::InfoSynchronizerManager;

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

using Times = std::map<std::string, double>;

// What the reports of the scenarios do not show.
TEST(CaptureLine, GivesEachFieldToItsArgument) {
    play({R"({"call":"registerSnapshotRequestRecord","image":"A"})",
          call("updateFrameInfo",
               R"("frameNumber":4294967295,"timestamp":"2","camIds":[3,4],"frameExtra":5)"),
          call("updateRequestInfo",
               R"("reqValueA":-6,"reqValueB":7,"reqFlag":true,"reqIdsA":[8],)"
               R"("reqValue64":18446744073709551615,"expectedResultIds":[9,10])"),
          call("updateUIInfo", R"("requestType":-11,"camMode":12,"faceDetect":13,)"
                               R"("zoomRatio":1.5,"uiExtra":"\u0000x")"),
          call("updateAnchor3aInfo", R"("fstop":-0.0,"iso":14,"lux":"nan:0xffa00001",)"
                                     R"("exposureTime":-9223372036854775808)"),
          call("updateAnchorFrame", R"("anchorFrame":15)"),
          call("updateVndResultInfo", R"("vendorResultInfo":{"-7":"seven"})"),
          call("updateVndResultInfo", R"("resultId":8,"errorCode":"error_result")"),
          call("updateZuAlgoInfo", R"("zuAlgoInfo":{"algoList":["a"],"algoTimeA":{"a":"-inf"},)"
                                   R"("algoTimeB":[[{"hex":"ff00C3"},2]],"algoTimeC":{"c":3e0}})"),
          call("updateNodeProcState", R"("node":"n","state":"GetOutputError")"),
          call("updateSnapshotTimeInfo", R"("stage":"1request_to_zuhal")"),
          call("updateSnapshotTimeInfo", R"("timeInfo":{"15shot_2_view":19})"),
          R"({"call":"updatePostProcInfo","postProcInfo":{"p":20}})"});
    const auto& queue = *InfoSynchronizerManager::getInstance().mRequestRecordQueue;
    const camInfosync::RequestRecord& record = *queue.records.at("A#2");
    const camInfosync::SnapshotInfo& info = record.snapshotInfo;
    const auto& [valueA, valueB, anchorFrame, flag, value64, idsA, expected] = info.requestInfo;
    const auto& [algoList, timeA, timeB, timeC, state] = info.zuAlgoInfo;
    EXPECT_EQ(std::tuple(4294967295U, 5U),
              std::tie(record.frameInfo.frameNumber, record.frameInfo.frameExtra));
    EXPECT_EQ(std::tuple(-6, 7, 15, true, UINT64_MAX, std::vector<int32_t>{8}),
              std::tie(valueA, valueB, anchorFrame, flag, value64, idsA));
    EXPECT_EQ((std::vector<int32_t>{9, 10}), expected);
    EXPECT_EQ(std::tuple(-11, std::string("\0x", 2), 1.5F, INT64_MIN),
              std::tie(info.requestType, info.uiExtra, info.zoomRatio, info.exposureTime));
    EXPECT_EQ((std::map<int32_t, std::string>{
                      {-7, "seven"}, {8, "error_result"}, {9, "not_return"}, {10, "not_return"}}),
              info.vendorResultInfo);
    EXPECT_TRUE(std::signbit(info.fstop));
    uint32_t bits = 0;
    std::memcpy(&bits, &info.lux, sizeof(bits));
    EXPECT_EQ(0xffa00001U, bits);
    EXPECT_EQ((std::tuple(std::vector<std::string>{"a"}, Times{{"a", -INFINITY}},
                          Times{{std::string("\xff\0\xc3", 3), 2}}, Times{{"c", 3}})),
              std::tie(algoList, timeA, timeB, timeC));
    EXPECT_EQ((std::map<std::string, std::string>{{"n", "GetOutputError"}}), state);
    EXPECT_EQ((std::map<std::string, int64_t>{{"15shot_2_view", 19}, {"1request_to_zuhal", -1}}),
              info.timeInfo);
    EXPECT_EQ((std::map<std::string, uint32_t>{{"p", 20}}), queue.postProcInfo);
    play({R"({"call":"unregisterSnapshotRequestRecord","image":"A"})"});
}

}  // namespace
