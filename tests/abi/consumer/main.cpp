// A HAL in small: knows the installed package and nothing else.

#include <cstring>
#include <iostream>

#include <InfoSynchronizerManager.h>

using namespace camInfosync;  // NOLINT(google-build-using-namespace)

int main() {
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    void* answer = nullptr;
    manager.request(INFO_SYNC_TYPE_CMD, "snapshotInfoCollectEnable", &answer);
    if (answer == nullptr || std::strcmp(static_cast<char*>(answer), "enabled") != 0) {
        std::cerr << "the installed service does not answer\n";
        return 1;
    }
    const std::string image = "IMG_20250101_120000_0001";
    manager.registerSnapshotRequestRecord(image);
    manager.updateFrameInfo(image, 1, "1520700123456", {0, 2}, 0);
    manager.updateZuAlgoInfo(image, std::vector<std::string>{"node:with a long name"});
    manager.updateNodeProcTime(image, "node", 1.0, -1.0, 2.0);
    manager.updateSnapshotTimeInfo(image, {{"2request_to_vendor", 5}});
    const RequestRecord copy = *manager.mRequestRecordQueue->records.at(image);
    manager.snapshotRequestInfoFlush(image, INFO_SYNC_TYPE_COLLECT);
    manager.unregisterSnapshotRequestRecord(image);
    const bool whole = copy.hasError && copy.frameInfo.camIds.size() == 2 &&
                       copy.snapshotInfo.zuAlgoInfo.algoTimeC.at("node") == 2.0 &&
                       copy.snapshotInfo.timeInfo.at("2request_to_vendor") == 5;
    std::cout << (whole ? "the record is whole\n" : "the record is damaged\n");
    return whole ? 0 : 1;
}
