#include "UpdateRules.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "RequestRecord.h"

namespace camInfosync {
namespace {

constexpr char kNotReturned[] = "not_return";

// Gives `key` its starting value if it is new. Looks at the end first: nodes are usually listed
// in the order of their names.
template <typename Value, typename Key, typename Start>
void seed(std::map<std::string, Value>& values, Key&& key, Start start) {
    if (values.empty() || values.rbegin()->first < key) {
        values.emplace_hint(values.end(), std::forward<Key>(key), start);
    } else {
        values.try_emplace(std::forward<Key>(key), start);
    }
}

}  // namespace

void storeFrame(FrameInfo& frame, uint32_t frameNumber, std::string& timestamp,
                std::vector<uint32_t>& camIds, uint32_t frameExtra, const std::string& imageName) {
    frame.frameNumber = frameNumber;
    frame.timestamp.swap(timestamp);
    frame.frameExtra = frameExtra;
    frame.imageName = imageName;
    if (frame.camIds.empty()) {
        frame.camIds.swap(camIds);
    } else {
        frame.camIds.insert(frame.camIds.end(), camIds.begin(), camIds.end());
    }
}

void storeNodeTimes(SnapshotInfo::ZuAlgoInfo& algo, std::string& node, double first, double second,
                    double third) {
    algo.algoTimeA[node] = first;
    algo.algoTimeB[node] = second;
    algo.algoTimeC[std::move(node)] = third;
}

void replaceAlgoList(SnapshotInfo::ZuAlgoInfo& algo, std::vector<std::string>& algoList) {
    algo.algoList.swap(algoList);
    for (const std::string& entry : algo.algoList) {
        std::string key = entry.substr(0, entry.find(':'));
        seed(algo.algoTimeA, key, 0.0);
        seed(algo.algoTimeB, key, 0.0);
        seed(algo.algoState, std::move(key), "none");
    }
}

void storeVendorResult(SnapshotInfo& snapshot, int32_t resultId, const char* text) {
    SnapshotInfo::VendorResultInfo& results = snapshot.vendorResultInfo;
    const std::vector<int32_t>& expected = snapshot.requestInfo.expectedResultIds;
    // Deliberate: overwrites results that have come already, and counts repeated ids each time.
    if (results.size() < expected.size()) {
        for (const int32_t id : expected) {
            results[id] = kNotReturned;
        }
    }
    results[resultId] = text;
}

}  // namespace camInfosync
