// A HAL in small: knows the installed package and nothing else.

#include <iostream>
#include <string>

#include <InfoSynchronizerManager.h>

#include "ServiceCalls.h"

using namespace camInfosync;  // NOLINT(google-build-using-namespace)

// With an argument: there is no service and no property, so nothing may be collected.
int main(int argc, char** /*argv*/) {
    const std::string image = "IMG_20250101_120000_0001";
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    manager.registerSnapshotRequestRecord(image);
    manager.updateFrameInfo(image, 1, "1520700123456", {0, 2}, 0);
    manager.updateZuAlgoInfo(image, std::vector<std::string>{"node:with a long name"});
    manager.updateNodeProcTime(image, "node", 1.0, -1.0, 2.0);
    manager.updateSnapshotTimeInfo(image, {{"2request_to_vendor", 5}});
    manager.snapshotRequestInfoFlush(image, INFO_SYNC_TYPE_COLLECT);

    // Records are read here, with this program's idea of their layout.
    size_t whole = 0;
    for (const auto& [name, record] : manager.mRequestRecordQueue->records) {
        const SnapshotInfo& info = record->snapshotInfo;
        const bool isWhole = name == image && record->hasError &&
                             record->frameInfo.camIds.size() == 2 &&
                             info.zuAlgoInfo.algoTimeC.at("node") == 2.0 &&
                             info.timeInfo.at("2request_to_vendor") == 5;
        whole += isWhole ? 1 : 0;
    }
    const size_t records = manager.mRequestRecordQueue->records.size();
    const std::vector<ServiceCall> calls = takeServiceCalls();
    const bool closed = !calls.empty() && calls.back().id == image && calls.back().first == 1022;
    manager.unregisterSnapshotRequestRecord(image);
    std::cout << records << " records, " << whole << " whole, " << calls.size() << " calls to the "
              << "service, " << (closed ? "the report is closed" : "no report is closed") << '\n';
    const bool asExpected =
            argc == 1 ? records == 1 && whole == 1 && closed : records == 0 && calls.empty();
    return asExpected ? 0 : 1;
}
