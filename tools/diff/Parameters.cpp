#include "Parameters.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "JsonText.h"
#include "Row.h"

namespace diff {
namespace {

std::string textOf(const std::string& value) {
    return value;
}

std::string textOf(bool value) {
    return value ? "true" : "false";
}

std::string textOf(double value) {
    return view::jsonNumber(value);
}

std::string textOf(int64_t value) {
    return std::to_string(value);
}

template <typename Integer>
std::string textOf(rows::InText<Integer> value) {
    return std::to_string(value.value);
}

}  // namespace

std::vector<Parameter> parametersOf(const rows::CaptureRow& row) {
    std::vector<Parameter> parameters;
    parameters.reserve(20);
    const auto add = [&](const char* name, const auto& value) {
        parameters.emplace_back(name,
                                value ? std::optional<std::string>(textOf(*value)) : std::nullopt);
    };
    add("frame_number", row.frameNumber);
    add("timestamp", row.timestamp);
    add("frame_extra", row.frameExtra);
    add("cameras", row.cameras);
    add("request_type", row.requestType);
    add("cam_mode", row.camMode);
    add("face_detect", row.faceDetect);
    add("zoom_ratio", row.zoomRatio);
    add("ui_extra", row.uiExtra);
    add("req_value_a", row.reqValueA);
    add("req_value_b", row.reqValueB);
    add("anchor_frame", row.anchorFrame);
    add("req_flag", row.reqFlag);
    add("req_value64", row.reqValue64);
    add("req_ids_a", row.reqIdsA);
    add("expected_result_ids", row.expectedResultIds);
    add("fstop", row.fstop);
    add("iso", row.iso);
    add("lux", row.lux);
    add("exposure_time", row.exposureTime);
    add("algorithms", row.algorithms);
    return parameters;
}

}  // namespace diff
