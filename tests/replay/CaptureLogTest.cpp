// One line of a capture log: what is wrong with it, and where its fields end up.

#include "CaptureLog.h"

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "InfoSynchronizerManager.h"

namespace {

using camInfosync::InfoSynchronizerManager;

std::string errorsOf(const std::string& line) {
    std::vector<replay::LineError> errors;
    replay::readCaptureLine(line, {}, errors);
    std::string text;
    for (const replay::LineError& error : errors) {
        text += (text.empty() ? "" : "; ") + error.field + ": " + error.what;
    }
    return text;
}

std::string call(const std::string& name, const std::string& fields) {
    return R"({"call":")" + name + R"(","image":"A",)" + fields + '}';
}

TEST(CaptureLine, SaysWhatIsWrongAndWhere) {
    const std::string int32 = "must be a whole number from -2147483648 to 2147483647";
    const std::string uint32 = "must be a whole number from 0 to 4294967295";
    const struct {
        std::string line;
        std::string errors;
    } cases[] = {
            {"", ""},
            {" \t\r", ""},
            {"{\"barrier\":true}\r", ""},
            {"{}", "call: is missing"},
            {"[]", "line: must be an object"},
            {"null", "line: must be an object"},
            {"{\"call\":\"\xff\"}",
             "line: is no JSON at column 10: syntax error while parsing value"
             " - invalid string: ill-formed UTF-8 byte; last read: '\"\\xff'"},
            {R"({"call":1})", "call: must be a text"},
            {R"({"call":"request","image":"A"})", "call: is no operation: request"},
            {R"({"barrier":1})", "barrier: must be true"},
            {R"({"barrier":true,"thread":"a"})", "thread: cannot stand beside barrier"},
            {R"({"sleepMs":60001})", "sleepMs: must be a whole number from 0 to 60000"},
            {R"({"sleepMs":0.5})", "sleepMs: must be a whole number from 0 to 60000"},
            {R"({"call":"a","\u001b":1,"\u001b":2})", "\\x1b: is given twice"},
            {R"({"postProcInfo":{"a":{"b":1}},"x":{"b":{"b":1,"b":2}}})", "b: is given twice"},
            {std::string(8, '[') + std::string(8, ']'), "line: must be an object"},
            {std::string(9, '['), "line: is nested deeper than 8"},
            {call("updateAnchorFrame", R"("anchorFrame":2147483648)"), "anchorFrame: " + int32},
            {call("updateAnchorFrame", R"("anchorFrame":-2147483649)"), "anchorFrame: " + int32},
            {call("updateAnchorFrame", R"("anchorFrame":-2147483648)"), ""},
            {call("updateAnchorFrame", R"("anchorFrame":1.0)"), "anchorFrame: " + int32},
            {call("updateAnchorFrame", R"("anchorFrame":1e999)"),
             "line: number overflow parsing '1e999'"},
            {call("updateAnchorFrame", R"("anchorFrame":1,"thread":"")"),
             "thread: must not be empty"},
            {call("updateAnchorFrame", R"("anchorFrame":1,"state":1)"),
             "state: is not a field of this call"},
            {call("updateFrameInfo",
                  R"("frameNumber":-1,"timestamp":7,"camIds":[0,"1"],"frameExtra":true)"),
             "frameNumber: " + uint32 + "; timestamp: must be a text; camIds[1]: " + uint32 +
                     "; frameExtra: " + uint32},
            {call("updateUIInfo",
                  R"("requestType":-9,"camMode":1,"faceDetect":1,"zoomRatio":3.5e38)"),
             "zoomRatio: is too large for a 32-bit float; uiExtra: is missing"},
            {call("updateSnapshotErrorInfo", R"("text":"a\u0000")"),
             "text: must not hold a zero character"},
            {call("updateVndResultInfo", R"("vendorResultInfo":{"1":"a","01":"b"})"),
             "vendorResultInfo.1: stands for a number that was given before"},
            {call("updateVndResultInfo", R"("vendorResultInfo":{"1x":"a"},"errorCode":0)"),
             "vendorResultInfo: is not a field of this call; resultId: is missing"},
            {call("updateVndResultInfo", R"("vendorResultInfo":{"1x":"a"})"),
             "vendorResultInfo.1x: must have a 32-bit whole number as its name"},
            {call("updateZuAlgoInfo", R"("zuAlgoInfo":{"algoTimeA":{"n":"1"},"algoTimeD":{}})"),
             "zuAlgoInfo.algoTimeA.n: must be a number; "
             "zuAlgoInfo.algoTimeD: is not a field of zuAlgoInfo"},
            {call("updateNodeProcState", R"("states":[])"), "states: must be an object"},
            {call("snapshotRequestInfoFlush", R"("type":4294967296)"), "type: " + int32},
    };
    for (const auto& [line, errors] : cases) {
        EXPECT_EQ(errors, errorsOf(line)) << line;
    }
}

// Plays lines on the manager, with image names ending in "#2".
void play(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        std::vector<replay::LineError> errors;
        const replay::CaptureStep step = replay::readCaptureLine(line, "#2", errors);
        ASSERT_TRUE(errors.empty()) << line;
        step.run(InfoSynchronizerManager::getInstance());
    }
}

using Texts = std::map<std::string, std::string>;
using Times = std::map<std::string, double>;

TEST(CaptureLine, GivesEachFieldToItsArgument) {
    play({R"({"call":"registerSnapshotRequestRecord","image":"A","thread":"t"})",
          call("updateFrameInfo",
               R"("frameNumber":4294967295,"timestamp":"2","camIds":[3,4],"frameExtra":5)"),
          call("updateRequestInfo", R"("reqValueA":-6,"reqValueB":7,"reqFlag":true,)"
                                    R"("reqValue64":18446744073709551615,"reqIdsA":[8],)"
                                    R"("expectedResultIds":[9,10])"),
          call("updateUIInfo", R"("requestType":-11,"camMode":12,"faceDetect":13,)"
                               R"("zoomRatio":1.5,"uiExtra":"\u0000x")"),
          call("updateAnchor3aInfo",
               R"("fstop":2,"iso":14,"lux":2.5,"exposureTime":-9223372036854775808)"),
          call("updateAnchorFrame", R"("anchorFrame":15)"),
          call("updateVndResultInfo", R"("resultId":9,"errorCode":4)"),
          call("updateZuAlgoInfo", R"("algoList":["n:1"])"),
          call("updateNodeProcTime", R"("node":"n","first":16,"second":17.5,"third":18e0)"),
          call("updateNodeProcState", R"("node":"n","state":3)"),
          call("updateSnapshotErrorInfo", R"("text":"oops")"),
          call("updateSnapshotTimeInfo", R"("stage":0)"),
          call("updateSnapshotTimeInfo", R"("timeInfo":{"15shot_2_view":19})"),
          R"({"call":"updatePostProcInfo","postProcInfo":{"p":20}})"});
    const auto& queue = *InfoSynchronizerManager::getInstance().mRequestRecordQueue;
    const camInfosync::RequestRecord& record = *queue.records.at("A#2");
    const camInfosync::SnapshotInfo& info = record.snapshotInfo;
    const auto& [valueA, valueB, anchorFrame, flag, value64, idsA, expected] = info.requestInfo;
    const auto& [algoList, timeA, timeB, timeC, state] = info.zuAlgoInfo;
    const auto& [frameNumber, timestamp, camIds, frameExtra, imageName] = record.frameInfo;
    EXPECT_EQ(std::tuple(4294967295U, "2", std::vector<uint32_t>{3, 4}, 5U, "A#2"),
              std::tie(frameNumber, timestamp, camIds, frameExtra, imageName));
    EXPECT_EQ(std::tuple(-6, 7, 15, true, UINT64_MAX),
              std::tie(valueA, valueB, anchorFrame, flag, value64));
    EXPECT_EQ(std::vector<int32_t>{8}, idsA);
    EXPECT_EQ((std::vector<int32_t>{9, 10}), expected);
    EXPECT_EQ(std::tuple(-11, 12U, 13, 1.5F, std::string("\0x", 2)),
              std::tie(info.requestType, info.camMode, info.faceDetect, info.zoomRatio,
                       info.uiExtra));
    EXPECT_EQ(std::tuple(2.0F, 14, 2.5F, INT64_MIN),
              std::tie(info.fstop, info.iso, info.lux, info.exposureTime));
    EXPECT_EQ((std::map<int32_t, std::string>{{9, "error_buffer"}, {10, "not_return"}}),
              info.vendorResultInfo);
    EXPECT_EQ((std::tuple(Times{{"n", 16}}, Times{{"n", 17.5}}, Times{{"n", 18}},
                          Texts{{"n", "FlushTask"}})),
              std::tie(timeA, timeB, timeC, state));
    EXPECT_EQ("oops", record.errorInfo.back());
    EXPECT_EQ((std::map<std::string, int64_t>{{"15shot_2_view", 19}, {"1request_to_zuhal", -1}}),
              info.timeInfo);
    EXPECT_EQ((std::map<std::string, uint32_t>{{"p", 20}}), queue.postProcInfo);

    play({call("updateVndResultInfo", R"("vendorResultInfo":{"-7":"seven"})"),
          call("updateNodeProcState", R"("states":{"m":"x"})")});
    EXPECT_EQ((std::map<int32_t, std::string>{{-7, "seven"}}), info.vendorResultInfo);
    EXPECT_EQ((Texts{{"m", "x"}, {"n", "FlushTask"}}), state);
    play({call("updateZuAlgoInfo",
               R"("zuAlgoInfo":{"algoList":["a"],"algoTimeA":{"a":1},)"
               R"("algoTimeB":{"b":2},"algoTimeC":{"c":3},"algoState":{"s":"t"}})")});
    EXPECT_EQ((std::tuple(std::vector<std::string>{"a"}, Times{{"a", 1}}, Times{{"b", 2}},
                          Times{{"c", 3}}, Texts{{"s", "t"}})),
              std::tie(algoList, timeA, timeB, timeC, state));
    play({call("snapshotRequestInfoFlush", R"("type":1)"),
          R"({"call":"unregisterSnapshotRequestRecord","image":"A"})"});
    EXPECT_TRUE(queue.records.empty());
}

}  // namespace
