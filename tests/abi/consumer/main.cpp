// A HAL in small: knows the installed package and nothing else.

#include <cstring>
#include <iostream>
#include <string>

#include <InfoSynchronizerManager.h>

#include "ServiceCalls.h"

using namespace camInfosync;  // NOLINT(google-build-using-namespace)

namespace {

bool failed = false;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "not so: " << what << '\n';
        failed = true;
    }
}

void report(InfoSynchronizerManager& manager, const std::string& image) {
    manager.registerSnapshotRequestRecord(image);
    manager.updateFrameInfo(image, 1, "1520700123456", {0, 2}, 0);
    manager.updateZuAlgoInfo(image, std::vector<std::string>{"node:with a long name"});
    manager.updateNodeProcTime(image, "node", 1.0, -1.0, 2.0);
    manager.updateSnapshotTimeInfo(image, {{"2request_to_vendor", 5}});
    manager.snapshotRequestInfoFlush(image, INFO_SYNC_TYPE_COLLECT);
}

// The record is read here, with this program's idea of its layout.
void expectWhole(const RequestRecord& record) {
    expect(record.hasError, "a negative time marks the record");
    expect(record.frameInfo.camIds.size() == 2, "there are two cameras");
    expect(record.snapshotInfo.zuAlgoInfo.algoTimeC.at("node") == 2.0, "the node ends at 2.0");
    expect(record.snapshotInfo.timeInfo.at("2request_to_vendor") == 5, "the stage has its time");
}

}  // namespace

// With an argument: there is no service and no property, so nothing may be collected.
int main(int argc, char** /*argv*/) {
    const bool collects = argc == 1;
    const std::string image = "IMG_20250101_120000_0001";
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    void* answer = nullptr;
    manager.request(INFO_SYNC_TYPE_CMD, "snapshotInfoCollectEnable", &answer);
    const char* expected = collects ? "enabled" : "";
    expect(answer != nullptr && std::strcmp(static_cast<char*>(answer), expected) == 0,
           "the service answers");

    report(manager, image);
    const auto& records = manager.mRequestRecordQueue->records;
    expect(records.count(image) == (collects ? 1 : 0), "the record is kept if it is collected");
    if (collects && !failed) {
        expectWhole(*records.at(image));
    }
    manager.unregisterSnapshotRequestRecord(image);

    const std::vector<ServiceCall> calls = takeServiceCalls();
    expect(calls.empty() != collects, "the service receives what is collected");
    if (!calls.empty()) {
        const ServiceCall& last = calls.back();
        expect(last.kind == ServiceCall::Kind::kFinishReport && last.id == image &&
                       last.first == 1022,
               "the report is closed");
    }
    return failed ? 1 : 0;
}
