#include "CaptureContent.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Capture.h"
#include "RequestRecord.h"

namespace replay {
namespace {

using camInfosync::RequestRecord;
using Group = view::Value::Group;

constexpr char kNotReturned[] = "not_return";

template <typename Number>
std::string numberText(Number value) {
    char text[40];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

std::string listText(const std::vector<int32_t>& list) {
    std::string text;
    for (const int32_t element : list) {
        text += (text.empty() ? "" : ", ") + std::to_string(element);
    }
    return text;
}

// Collects values under their names.
class Values {
  public:
    explicit Values(std::vector<view::Value>& values) : mValues(values) {}

    void beginGroup(Group group) { mGroup = group; }
    void add(const char* name, std::string text) {
        mValues.push_back({mGroup, name, std::move(text), false});
    }
    template <typename Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
    void add(const char* name, Number value) {
        bool isNumber = true;
        if constexpr (std::is_floating_point_v<Number>) {
            isNumber = std::isfinite(value);
        }
        mValues.push_back({mGroup, name, numberText(value), isNumber});
    }

  private:
    std::vector<view::Value>& mValues;
    Group mGroup = Group::kFrame;
};

void addRequest(const camInfosync::SnapshotInfo::RequestInfo& info, Values& values) {
    values.add("reqValueA", info.reqValueA);
    values.add("reqValueB", info.reqValueB);
    values.add("reqFlag", std::string(info.reqFlag ? "true" : "false"));
    values.add("reqValue64", info.reqValue64);
    values.add("reqIdsA", listText(info.reqIdsA));
    values.add("expectedResultIds", listText(info.expectedResultIds));
}

void addUserInterface(const camInfosync::SnapshotInfo& info, Values& values) {
    values.add("requestType", static_cast<int32_t>(info.requestType));
    values.add("camMode", info.camMode);
    values.add("faceDetect", info.faceDetect);
    values.add("zoomRatio", info.zoomRatio);
    values.add("uiExtra", info.uiExtra);
}

template <typename Map>
std::optional<double> timeIn(const Map& map, const std::string& node) {
    const auto time = map.find(node);
    return time != map.end() ? std::optional<double>(time->second) : std::nullopt;
}

// A node without a start comes last.
double orderOf(const view::Node& node) {
    return node.start && !std::isnan(*node.start) ? *node.start
                                                  : std::numeric_limits<double>::infinity();
}

}  // namespace

std::vector<view::Stage> stagesOf(const RequestRecord& record, const DeskTimes& times) {
    std::vector<view::Stage> stages;
    for (uint32_t number = 0; number < std::size(camInfosync::TimeStageToChar); ++number) {
        const std::string name = camInfosync::TimeStageToChar[number];
        const auto stage = record.snapshotInfo.timeInfo.find(name);
        if (stage == record.snapshotInfo.timeInfo.end()) {
            continue;
        }
        const bool isKnown = times.stages.count(name) == 0;
        stages.push_back({number, name, isKnown ? stage->second : -1, isKnown});
    }
    return stages;
}

std::vector<view::Value> valuesOf(const RequestRecord& record, const ToldValues& told) {
    std::vector<view::Value> all;
    Values values(all);
    const camInfosync::SnapshotInfo& info = record.snapshotInfo;
    if (told.frame) {
        values.add("frameNumber", record.frameInfo.frameNumber);
        values.add("timestamp", record.frameInfo.timestamp);
        values.add("frameExtra", record.frameInfo.frameExtra);
    }
    values.beginGroup(Group::kRequest);
    if (told.request) {
        addRequest(info.requestInfo, values);
    }
    if (told.anchorFrame) {
        values.add("anchorFrame", info.requestInfo.anchorFrame);
    }
    values.beginGroup(Group::kUserInterface);
    if (told.userInterface) {
        addUserInterface(info, values);
    }
    values.beginGroup(Group::kAutomatics);
    if (told.automatics) {
        values.add("fstop", info.fstop);
        values.add("iso", info.iso);
        values.add("lux", info.lux);
        values.add("exposureTime", info.exposureTime);
    }
    return all;
}

std::vector<view::Node> nodesOf(const RequestRecord& record,
                                const std::map<std::string, Origin>& told) {
    const auto& algo = record.snapshotInfo.zuAlgoInfo;
    std::map<std::string, view::Node> byName;
    for (const auto* times : {&algo.algoTimeA, &algo.algoTimeB, &algo.algoTimeC}) {
        for (const auto& [name, time] : *times) {
            byName[name];
        }
    }
    for (const auto& [name, state] : algo.algoState) {
        byName[name].state = state;
    }
    for (const std::string& entry : algo.algoList) {
        byName[entry.substr(0, entry.find(':'))].isListed = true;
    }
    std::vector<view::Node> nodes;
    for (auto& [name, node] : byName) {
        const auto origin = told.find(name);
        node.name = name;
        node.start = timeIn(algo.algoTimeA, name);
        node.second = timeIn(algo.algoTimeB, name);
        node.completion = timeIn(algo.algoTimeC, name);
        node.place = origin != told.end() ? origin->second.place : view::Place{};
        nodes.push_back(std::move(node));
    }
    std::stable_sort(nodes.begin(), nodes.end(),
                     [](const view::Node& left, const view::Node& right) {
                         return orderOf(left) < orderOf(right);
                     });
    return nodes;
}

std::vector<view::VendorResult> resultsOf(const RequestRecord& record,
                                          const std::map<int32_t, Origin>& told) {
    std::map<int32_t, std::string> texts = record.snapshotInfo.vendorResultInfo;
    for (const int32_t id : record.snapshotInfo.requestInfo.expectedResultIds) {
        texts.try_emplace(id, kNotReturned);
    }
    std::vector<view::VendorResult> results;
    for (auto& [id, text] : texts) {
        const auto origin = told.find(id);
        results.push_back(
                {id, std::move(text), origin != told.end() ? origin->second.place : view::Place{}});
    }
    return results;
}

}  // namespace replay
