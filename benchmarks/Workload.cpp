#include "Workload.h"

#include <cstring>
#include <fstream>
#include <stdexcept>

#include <zudebug/Log.h>

CountingService& service() {
    static CountingService service;
    return service;
}

void prepareLibrary() {
    zudebug::gZuCamLogGroup = 0;
    camInfosync::InfoSynchronizer::mIntentAwareImpl = &service();
}

Calls readCalls(const std::string& file, const std::string& imageSuffix) {
    std::ifstream log(INFOSYNC_BENCH_DATA "/" + file);
    Calls calls;
    std::vector<replay::LineError> errors;
    for (std::string line; std::getline(log, line);) {
        calls.push_back(replay::readCaptureLine(line, imageSuffix, errors));
        if (!errors.empty() || calls.back().run == nullptr) {
            throw std::runtime_error(file + ": not a call: " + line);
        }
    }
    if (calls.empty()) {
        throw std::runtime_error(file + ": cannot be read");
    }
    return calls;
}

void makeCalls(const Calls& calls) {
    for (const replay::CaptureStep& call : calls) {
        call.run(manager());
    }
}

const Lifecycle& shortNames() {
    static const Lifecycle lifecycle{"IMG_", readCalls("lifecycle.jsonl")};
    return lifecycle;
}

const Lifecycle& longNames() {
    static const Lifecycle lifecycle{"IMG_20250101_120000_",
                                     readCalls("lifecycle-long-names.jsonl")};
    return lifecycle;
}

bool askWhetherEnabled() {
    void* answer = nullptr;
    manager().request(camInfosync::INFO_SYNC_TYPE_CMD, "snapshotInfoCollectEnable", &answer);
    return answer != nullptr && std::strcmp(static_cast<const char*>(answer), "enabled") == 0;
}

OthersInFlight::OthersInFlight(const Lifecycle& lifecycle, int64_t count) {
    for (int64_t i = 0; i < count; ++i) {
        mImages.push_back(lifecycle.imageStem + std::to_string(1000000 + i));
        manager().registerSnapshotRequestRecord(mImages.back());
        manager().updateFrameInfo(mImages.back(), 1, "1520700123456", {0}, 0);
    }
}

OthersInFlight::~OthersInFlight() {
    for (const std::string& image : mImages) {
        manager().unregisterSnapshotRequestRecord(image);
    }
}
