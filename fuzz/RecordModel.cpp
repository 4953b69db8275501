#include "RecordModel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Check.h"

namespace fuzz {
namespace {

std::string floatText(float value) {
    char text[64];
    std::snprintf(text, sizeof(text), "%f", static_cast<double>(value));
    return text;
}

// Equal, and a NaN equals itself; 0 and -0 differ.
template <typename Value>
bool same(const Value& a, const Value& b) {
    return a == b;
}
bool same(double a, double b) {
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}
bool same(float a, float b) {
    return same(static_cast<double>(a), static_cast<double>(b));
}
bool same(const std::map<std::string, double>& a, const std::map<std::string, double>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.first == y.first && same(x.second, y.second);
    });
}

}  // namespace

int64_t truncated(double value, int64_t least, int64_t most) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value <= static_cast<double>(least)) {
        return least;
    }
    // As a double, the largest 64-bit value is one more than it is.
    if (value >= static_cast<double>(most)) {
        return most;
    }
    return static_cast<int64_t>(value);
}

std::string paramCall(const std::string& id, const std::string& key, const std::string& value) {
    return "P" + id + "\n" + key + "\n" + value;
}

std::string eventCall(const std::string& id, const std::string& event) {
    return "E" + id + "\n" + event;
}

std::string finishCall(const std::string& id, int32_t first, int32_t second) {
    return "F" + id + "\n" + std::to_string(first) + "\n" + std::to_string(second);
}

std::string stageText(uint32_t stage) {
    static const char* const texts[] = {
            "request_to_zuhal",      "request_to_vendor",  "result_from_vendor",
            "result_to_fwk",         "request_to_post",    "request_to_algo",
            "anchor_time",           "getbuffer_from_fwk", "mock_config_from_fwk",
            "mock_request_from_fwk", "mock_result_to_fwk", "post_proc_time",
            "shot_2_shot",           "shot_2_gallery",     "shot_2_view"};
    return stage < 15 ? std::to_string(stage + 1) + texts[stage] : "";
}

std::string stateText(int32_t state) {
    static const char* const texts[] = {"OK", "GetInputError", "GetOutputError", "FlushTask",
                                        "NodeProcessError"};
    return state >= 0 && state < 5 ? texts[state] : "";
}

std::string resultText(int32_t code) {
    static const char* const texts[] = {"none", "device", "request", "result", "buffer"};
    return code >= 0 && code < 5 ? std::string("error_") + texts[code] : "";
}

std::vector<std::string> ModelRecord::report() const {
    const std::string& id = frameName;
    const std::string camera = cameras.empty() ? "" : std::to_string(cameras.front());
    const std::string signedCamera =
            cameras.empty() ? "-1" : std::to_string(static_cast<int32_t>(cameras.front()));
    std::vector<std::string> calls{
            paramCall(id, "iso", std::to_string(iso)),
            paramCall(id, "lux", floatText(lux)),
            paramCall(id, "face_detect", std::to_string(faceDetect)),
            paramCall(id, "cam_mode", std::to_string(camMode)),
            paramCall(id, "cam_id", signedCamera),
            paramCall(id, "fstop", floatText(fstop)),
            paramCall(id, "zoom_ratio", std::to_string(truncated(zoom, INT32_MIN, INT32_MAX))),
            paramCall(id, "exposure_time", std::to_string(exposure)),
            eventCall(id, "{ \"submit-request\":{\"pipeline_name\":\"" + id +
                                  "\",\"timestamp\":\"" + timestamp + "\"}}"),
    };
    const auto add = [&](const std::string& node, double time, const char* stage) {
        calls.push_back(eventCall(
                id, "{\"" + node + "\":{\"pipeline_name\":\"" + id + "\",\"timestamp\":\"" +
                            std::to_string(truncated(time, INT64_MIN, INT64_MAX)) +
                            "\",\"cam_id\":\"" + camera + "\",\"node_stage\":\"" + stage + "\"}}"));
    };
    for (const auto& [node, start] : timeA) {
        add(node, start, "0");
        if (timeC.count(node) != 0) {
            add(node, timeC.at(node), "2");
        }
    }
    calls.push_back(finishCall(id, 1022, 10000));
    return calls;
}

void ModelRecord::compare(const camInfosync::RequestRecord& record) const {
    const auto& info = record.snapshotInfo;
    FUZZ_CHECK(same(errors, record.errorInfo) && record.hasError == !errors.empty());
    FUZZ_CHECK(frameNumber == record.frameInfo.frameNumber);
    FUZZ_CHECK(timestamp == record.frameInfo.timestamp);
    FUZZ_CHECK(cameras == record.frameInfo.camIds);
    FUZZ_CHECK(frameExtra == record.frameInfo.frameExtra);
    FUZZ_CHECK(frameName == record.frameInfo.imageName);
    FUZZ_CHECK(requestType == info.requestType);
    FUZZ_CHECK(camMode == info.camMode && faceDetect == info.faceDetect);
    FUZZ_CHECK(same(zoom, info.zoomRatio) && uiExtra == info.uiExtra);
    FUZZ_CHECK(requestA == info.requestInfo.reqValueA && requestB == info.requestInfo.reqValueB);
    FUZZ_CHECK(requestFlag == info.requestInfo.reqFlag);
    FUZZ_CHECK(request64 == info.requestInfo.reqValue64);
    FUZZ_CHECK(idsA == info.requestInfo.reqIdsA);
    FUZZ_CHECK(expectedIds == info.requestInfo.expectedResultIds);
    FUZZ_CHECK(anchorFrame == info.requestInfo.anchorFrame);
    FUZZ_CHECK(same(fstop, info.fstop) && same(lux, info.lux));
    FUZZ_CHECK(iso == info.iso && exposure == info.exposureTime);
    FUZZ_CHECK(results == info.vendorResultInfo);
    FUZZ_CHECK(algorithms == info.zuAlgoInfo.algoList);
    FUZZ_CHECK(same(timeA, info.zuAlgoInfo.algoTimeA));
    FUZZ_CHECK(same(timeB, info.zuAlgoInfo.algoTimeB));
    FUZZ_CHECK(same(timeC, info.zuAlgoInfo.algoTimeC));
    FUZZ_CHECK(states == info.zuAlgoInfo.algoState);
    FUZZ_CHECK(stages == info.timeInfo);
}

}  // namespace fuzz
