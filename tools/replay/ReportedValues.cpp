#include "ReportedValues.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "FindingList.h"
#include "NumberText.h"
#include "RequestRecord.h"
#include "Saturate.h"

namespace replay {
namespace {

using camInfosync::NumberText;
using camInfosync::truncateSaturated;

template <typename Number>
std::string textOf(Number value) {
    return std::string(NumberText(value).text());
}

void addNodes(const camInfosync::SnapshotInfo::ZuAlgoInfo& algo, ReportedValues& values) {
    for (const auto& [node, start] : algo.algoTimeA) {
        values[{Teller::kNode, "start of " + node}] = {node,
                                                       textOf(truncateSaturated<int64_t>(start))};
        const auto completion = algo.algoTimeC.find(node);
        if (completion != algo.algoTimeC.end()) {
            values[{Teller::kNode, "completion of " + node}] = {
                    node, textOf(truncateSaturated<int64_t>(completion->second))};
        }
    }
}

}  // namespace

ReportedValues reportedValues(const camInfosync::RequestRecord& record) {
    const auto& frame = record.frameInfo;
    const auto& snapshot = record.snapshotInfo;
    ReportedValues values;
    const auto add = [&values](Teller teller, const char* name, std::string text) {
        values[{teller, name}] = {{}, std::move(text)};
    };
    add(Teller::kFrame, "timestamp", frame.timestamp);
    add(Teller::kFrame, "first camera", frame.camIds.empty() ? "none" : textOf(frame.camIds[0]));
    add(Teller::kUserInterface, "face_detect", textOf(snapshot.faceDetect));
    add(Teller::kUserInterface, "cam_mode", textOf(snapshot.camMode));
    add(Teller::kUserInterface, "zoom_ratio",
        textOf(truncateSaturated<int32_t>(snapshot.zoomRatio)));
    add(Teller::kAutomatics, "iso", textOf(snapshot.iso));
    add(Teller::kAutomatics, "lux", textOf(snapshot.lux));
    add(Teller::kAutomatics, "fstop", textOf(snapshot.fstop));
    add(Teller::kAutomatics, "exposure_time", textOf(snapshot.exposureTime));
    addNodes(snapshot.zuAlgoInfo, values);
    return values;
}

std::vector<LateValue> lateValues(const ReportedValues& reported, const ReportedValues& now) {
    std::vector<LateValue> late;
    for (const auto& [key, value] : now) {
        const auto before = reported.find(key);
        if (before == reported.end() || before->second.text != value.text) {
            const std::string was = before == reported.end()
                                            ? ", not reported"
                                            : ", reported as " + shortened(before->second.text);
            late.push_back({key.first, value.node,
                            shortened(key.second) + " is " + shortened(value.text) + was});
        }
    }
    for (const auto& [key, value] : reported) {
        if (now.count(key) == 0) {
            late.push_back(
                    {Teller::kAllNodes, value.node,
                     shortened(key.second) + " is gone, reported as " + shortened(value.text)});
        }
    }
    return late;
}

}  // namespace replay
