#include "Totals.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "InfoSynchronizer.h"
#include "InfoSynchronizerManager.h"
#include "Printable.h"
#include "RequestRecordQueue.h"

namespace replay {
namespace {

constexpr size_t kMostNamesShown = 10;
constexpr size_t kLongestName = 60;

std::string collectionState(const CollectionAnswer& answer) {
    if (!camInfosync::camQuillSupported) {
        return "off: persist.vendor.camera.camquill.supported is not true";
    }
    if (camInfosync::infoSyncCollectForceEnabled) {
        return "on: forced by persist.vendor.camera.infoSyncCollect.forceEnabled";
    }
    if (camInfosync::InfoSynchronizer::mIntentAwareImpl == nullptr) {
        return "off: there is no service to ask";
    }
    const std::string state = answer.first == "enabled" ? "on" : "off";
    const std::string text =
            ": the service answers \"" + printable(answer.first, kLongestName) + '"';
    return answer.changes == 0 ? state + text
                               : state + " at first" + text + ", and changes its answer " +
                                         std::to_string(answer.changes) +
                                         (answer.changes == 1 ? " time" : " times");
}

// The first names of a map, in its order, as ": A, B, ... and N more".
template <typename Map, typename Text>
std::string firstNames(const Map& map, Text text) {
    std::string names;
    size_t shown = 0;
    for (const auto& entry : map) {
        if (shown == kMostNamesShown) {
            return names + ", ... and " + std::to_string(map.size() - shown) + " more";
        }
        names += (shown++ == 0 ? ": " : ", ") + text(entry);
    }
    return names;
}

std::string recordsLeft(const camInfosync::RequestRecordQueue& queue) {
    return std::to_string(queue.records.size()) + firstNames(queue.records, [](const auto& entry) {
               return printable(entry.first, kLongestName);
           });
}

std::string failedImages(const camInfosync::RequestRecordQueue& queue) {
    std::map<std::string, uint64_t> errorsByName;
    for (const std::string& name : queue.errorImageNames) {
        ++errorsByName[name];
    }
    return std::to_string(errorsByName.size()) + firstNames(errorsByName, [](const auto& entry) {
               return printable(entry.first, kLongestName) + " (" + std::to_string(entry.second) +
                      (entry.second == 1 ? " error)" : " errors)");
           });
}

}  // namespace

std::string readableTotals(const Totals& totals, camInfosync::InfoSynchronizerManager& manager) {
    camInfosync::RequestRecordQueue& queue = *manager.mRequestRecordQueue;
    const std::lock_guard<std::mutex> lock(queue.mutex);
    return "totals\n  collection     " + collectionState(totals.answer) + "\n  calls made     " +
           std::to_string(totals.calls) + "\n  flush calls    " + std::to_string(totals.flushes) +
           "\n  reports        " + std::to_string(totals.reports) + "\n  service calls  " +
           std::to_string(totals.serviceCalls) + "\n  records left   " + recordsLeft(queue) +
           "\n  failed images  " + failedImages(queue) + '\n';
}

}  // namespace replay
