// What becomes of records, and what a report on one says: a second, plain account of the library's
// behaviour. It keeps records in the library's plain type and takes the texts of codes from the
// library's tables, which the unit tests show to be right; it shares no other code with it.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "CallService.h"
#include "RequestRecord.h"

namespace fuzz {

using camInfosync::RequestRecord;
using camInfosync::TimeStageToChar;
using doubles::Call;

// CLOCK_MONOTONIC, for the library too.
inline timespec clockTime{};

// A record that was made now. All values are written out: those of the type may be wrong.
inline RequestRecord newRecord() {
    constexpr auto kType = static_cast<camInfosync::RequestType>(1);
    RequestRecord record(kType);
    record.hasError = false;
    record.createTime = clockTime;
    record.requestTime = {0, 0};
    record.frameInfo = {0, "", {}, 0, ""};
    record.snapshotInfo = {kType, 0, 0, 0, "", {}, {}, {}, 0, 0, 0, 0, {}};
    record.snapshotInfo.requestInfo = {0, 0, 0, false, 0, {}, {}};
    record.reserved64 = 0;
    return record;
}

// The bits of numbers, of which a NaN equals itself, and 0 and -0 differ.
template <typename Number>
uint64_t bits(Number number) {
    uint64_t result = 0;
    std::memcpy(&result, &number, sizeof(number));
    return result;
}
inline std::map<std::string, uint64_t> bits(const std::map<std::string, double>& numbers) {
    std::map<std::string, uint64_t> result;
    for (const auto& [key, number] : numbers) {
        result[key] = bits(number);
    }
    return result;
}

// All that a record holds.
inline auto contentOf(const RequestRecord& record) {
    const auto& [errors, failed, created, requested, frame, info, reserved] = record;
    const auto& [a, b, anchor, flag, wide, ids, expected] = info.requestInfo;
    const auto& [list, timesA, timesB, timesC, states] = info.zuAlgoInfo;
    return std::tuple_cat(
            std::tie(errors, failed, created.tv_sec, created.tv_nsec, requested.tv_sec,
                     requested.tv_nsec, frame.frameNumber, frame.timestamp, frame.camIds,
                     frame.frameExtra, frame.imageName, info.requestType, info.camMode,
                     info.faceDetect, info.uiExtra, info.vendorResultInfo, info.iso,
                     info.exposureTime, info.timeInfo, reserved),
            std::tie(a, b, anchor, flag, wide, ids, expected, list, states),
            std::tuple(bits(info.zoomRatio), bits(info.fstop), bits(info.lux), bits(timesA),
                       bits(timesB), bits(timesC)));
}

// The value without its fraction; the nearest end if it lies outside, and 0 for NaN.
template <typename Integer>
Integer truncated(double value) {
    using Limits = std::numeric_limits<Integer>;  // a long double holds both ends exactly
    const auto inside = std::clamp<long double>(value, Limits::min(), Limits::max());
    return std::isnan(value) ? 0 : static_cast<Integer>(inside);
}

// Stamps a stage as of now.
inline void stamp(RequestRecord& record, uint32_t stage) {
    const int64_t seconds = clockTime.tv_sec - record.createTime.tv_sec;
    const int64_t rest = (clockTime.tv_nsec - record.createTime.tv_nsec) / 1000000;
    const auto interval = static_cast<int32_t>(static_cast<uint32_t>(seconds * 1000 + rest));
    std::map<std::string, int64_t>& times = record.snapshotInfo.timeInfo;
    int64_t& time = times[TimeStageToChar[stage]];
    time = stage == 7 || stage == 11 ? 0 : interval;
    if (stage == 0) {
        time = -1;
        record.requestTime = clockTime;
    } else if (stage == 3 || stage == 13) {
        times[TimeStageToChar[16 - stage]] = interval;
    } else if (stage == 6) {
        time = truncated<int64_t>(interval - static_cast<double>(times[TimeStageToChar[4]]));
    }
}

// The calls that a report makes, in order.
inline std::vector<Call> reportOn(const RequestRecord& record) {
    const std::string& id = record.frameInfo.imageName;
    const std::vector<uint32_t>& cameras = record.frameInfo.camIds;
    const camInfosync::SnapshotInfo& info = record.snapshotInfo;
    const std::string camera = cameras.empty() ? "" : std::to_string(cameras[0]);
    const std::string begin = "\":{\"pipeline_name\":\"" + id + "\",\"timestamp\":\"";
    std::vector<Call> calls;
    const auto param = [&](const char* key, auto value) {
        calls.push_back({"setParam", id, key, std::to_string(value)});
    };
    param("iso", info.iso);
    param("lux", info.lux);
    param("face_detect", info.faceDetect);
    param("cam_mode", info.camMode);
    param("cam_id", cameras.empty() ? -1 : static_cast<int32_t>(cameras[0]));
    param("fstop", info.fstop);
    param("zoom_ratio", truncated<int32_t>(info.zoomRatio));
    param("exposure_time", info.exposureTime);
    calls.push_back({"reportEvent", id,
                     "{ \"submit-request" + begin + record.frameInfo.timestamp + "\"}}"});
    const auto add = [&](const std::string& node, double time, const std::string& stage) {
        const std::string text = std::to_string(truncated<int64_t>(time));
        calls.push_back({"reportEvent", id,
                         "{\"" + node + begin + text + "\",\"cam_id\":\"" + camera +
                                 "\",\"node_stage\":\"" + stage + "\"}}"});
    };
    const auto& completions = info.zuAlgoInfo.algoTimeC;
    for (const auto& [node, start] : info.zuAlgoInfo.algoTimeA) {
        add(node, start, "0");
        if (completions.count(node) != 0) {
            add(node, completions.at(node), "2");
        }
    }
    calls.push_back({"finishReport", id, "1022", "10000"});
    return calls;
}

}  // namespace fuzz
