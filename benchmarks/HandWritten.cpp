#include "HandWritten.h"

#include <dlfcn.h>

#include <iterator>
#include <utility>

#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#include <nlohmann/json.hpp>

#include "IntentAwareSys.h"

using camInfosync::NodeProcInfoToChar;
using camInfosync::ResultErrorCodeToChar;
using camInfosync::TimeStageToChar;

namespace {

// The overlap library; closed when this one is unloaded.
struct Overlap {
    Overlap() : handle(dlopen("/vendor/lib64/com.veltro.camhal.overlap.so", RTLD_NOW)) {}
    ~Overlap() {
        if (handle != nullptr) {
            dlclose(handle);
        }
    }
    Overlap(const Overlap&) = delete;
    Overlap& operator=(const Overlap&) = delete;

    void* const handle;
};

IntentAwareSys* loadService() {
    static const Overlap overlap;
    if (overlap.handle == nullptr) {
        return nullptr;
    }
    using Entry = OverlapInstance*(void* options);
    auto* entry = reinterpret_cast<Entry*>(dlsym(overlap.handle, "GetInstance"));
    OverlapInstance* instance = entry != nullptr ? entry(nullptr) : nullptr;
    if (instance == nullptr) {
        return nullptr;
    }
    instance->start();
    return static_cast<IntentAwareSys*>(instance->getObject("IntentAwareSys", 0));
}

using Json = nlohmann::ordered_json;  // keeps the members in the report's order

Json submitLiteral(const std::string& image, const std::string& timestamp) {
    return {{"submit-request", {{"pipeline_name", image}, {"timestamp", timestamp}}}};
}

Json submitByField(const std::string& image, const std::string& timestamp) {
    Json event;
    Json& fields = event["submit-request"];
    fields["pipeline_name"] = image;
    fields["timestamp"] = timestamp;
    return event;
}

Json nodeLiteral(const std::string& node, const std::string& image, const std::string& time,
                 const std::string& camId, const char* stage) {
    return {{node,
             {{"pipeline_name", image},
              {"timestamp", time},
              {"cam_id", camId},
              {"node_stage", stage}}}};
}

Json nodeByField(const std::string& node, const std::string& image, const std::string& time,
                 const std::string& camId, const char* stage) {
    Json event;
    Json& fields = event[node];
    fields["pipeline_name"] = image;
    fields["timestamp"] = time;
    fields["cam_id"] = camId;
    fields["node_stage"] = stage;
    return event;
}

int64_t milliseconds(const timespec& begin, const timespec& end) {
    return (end.tv_sec - begin.tv_sec) * 1000 + (end.tv_nsec - begin.tv_nsec) / 1000000;
}

}  // namespace

IntentAwareSys* HandWritten::service = loadService();

HandWritten::HandWritten(JsonStyle style)
    : mByField(style == JsonStyle::kByField),
      mLogger(std::make_shared<spdlog::logger>("snapshots",
                                               std::make_shared<spdlog::sinks::null_sink_mt>())) {
    mLogger->set_level(spdlog::level::off);
}

HandWritten::~HandWritten() = default;

bool HandWritten::isCollecting() const {
    return service != nullptr && service->queryValue("snapshotInfoCollectEnable") == "enabled";
}

HandWritten::Snapshot* HandWritten::find(const std::string& image) {
    const auto position = mSnapshots.find(image);
    if (position == mSnapshots.end()) {
        mLogger->warn("can't find image {}", image);
        return nullptr;
    }
    return &position->second;
}

void HandWritten::fail(Snapshot& snapshot, const std::string& image, const char* text) {
    snapshot.hasError = true;
    snapshot.errors.emplace_back(text);
    mFailedImages.push_back(image);
}

void HandWritten::registerSnapshotRequestRecord(const std::string& image) {
    if (!isCollecting()) {
        return;
    }
    std::lock_guard<std::mutex> lock(mMutex);
    const auto [position, isNew] = mSnapshots.try_emplace(image);
    if (!isNew) {
        mLogger->warn("image {} is registered already", image);
        return;
    }
    clock_gettime(CLOCK_MONOTONIC, &position->second.createTime);
    mLogger->info("register image {}, {} in flight", image, mSnapshots.size());
}

void HandWritten::unregisterSnapshotRequestRecord(const std::string& image) {
    if (!isCollecting()) {
        return;
    }
    std::lock_guard<std::mutex> lock(mMutex);
    if (mSnapshots.erase(image) == 0) {
        mLogger->warn("can't find image {}", image);
    }
    mLogger->info("unregister image {}, {} in flight", image, mSnapshots.size());
}

void HandWritten::snapshotRequestInfoFlush(const std::string& image,
                                           camInfosync::InfoSyncType type) {
    if (!isCollecting() || type != camInfosync::INFO_SYNC_TYPE_COLLECT) {
        return;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    const Snapshot* found = find(image);
    if (found == nullptr) {
        return;
    }
    const Snapshot snapshot = *found;
    lock.unlock();
    report(image, snapshot);
    mLogger->info("flushed image {}", image);
}

void HandWritten::report(const std::string& image, const Snapshot& snapshot) const {
    const std::string event =
            (mByField ? submitByField : submitLiteral)(image, snapshot.timestamp).dump();
    mLogger->info("submit {}", event);
    service->setParam(image, "iso", std::to_string(snapshot.iso));
    service->setParam(image, "lux", std::to_string(snapshot.lux));
    service->setParam(image, "face_detect", std::to_string(snapshot.faceDetect));
    service->setParam(image, "cam_mode", std::to_string(snapshot.camMode));
    service->setParam(image, "cam_id",
                      snapshot.camIds.empty() ? "-1" : std::to_string(snapshot.camIds.front()));
    service->setParam(image, "fstop", std::to_string(snapshot.fstop));
    service->setParam(image, "zoom_ratio",
                      std::to_string(static_cast<int32_t>(snapshot.zoomRatio)));
    service->setParam(image, "exposure_time", std::to_string(snapshot.exposureTime));
    service->reportEvent(image, event);
    const auto nodeEvent = mByField ? nodeByField : nodeLiteral;
    const std::string camId =
            snapshot.camIds.empty() ? std::string() : std::to_string(snapshot.camIds.front());
    for (const auto& [name, node] : snapshot.nodes) {
        const std::string start =
                nodeEvent(name, image, std::to_string(static_cast<int64_t>(node.first)), camId, "0")
                        .dump();
        mLogger->info("start {}", start);
        service->reportEvent(image, start);
        if (node.completed) {
            const std::string end =
                    nodeEvent(name, image, std::to_string(static_cast<int64_t>(node.third)), camId,
                              "2")
                            .dump();
            mLogger->info("completion {}", end);
            service->reportEvent(image, end);
        }
    }
    service->finishReport(image, 1022, 10000);
}

void HandWritten::updateFrameInfo(const std::string& image, uint32_t frameNumber,
                                  const std::string& timestamp, const std::vector<uint32_t>& camIds,
                                  uint32_t frameExtra) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->frameNumber = frameNumber;
        snapshot->timestamp = timestamp;
        snapshot->camIds.insert(snapshot->camIds.end(), camIds.begin(), camIds.end());
        snapshot->frameExtra = frameExtra;
    }
    mLogger->info("frame of image {}, {} in flight", image, mSnapshots.size());
}

void HandWritten::updateRequestInfo(const std::string& image, int32_t reqValueA, int32_t reqValueB,
                                    bool reqFlag, uint64_t reqValue64,
                                    const std::vector<int32_t>& reqIdsA,
                                    const std::vector<int32_t>& expectedResultIds) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->reqValueA = reqValueA;
        snapshot->reqValueB = reqValueB;
        snapshot->reqFlag = reqFlag;
        snapshot->reqValue64 = reqValue64;
        snapshot->reqIdsA = reqIdsA;
        snapshot->expectedResultIds = expectedResultIds;
    }
}

void HandWritten::updateUIInfo(const std::string& image, camInfosync::RequestType requestType,
                               uint32_t camMode, int32_t faceDetect, float zoomRatio,
                               const std::string& uiExtra) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->requestType = requestType;
        snapshot->camMode = camMode;
        snapshot->faceDetect = faceDetect;
        snapshot->zoomRatio = zoomRatio;
        snapshot->uiExtra = uiExtra;
    }
}

void HandWritten::updateAnchor3aInfo(const std::string& image, float fstop, int32_t iso, float lux,
                                     int64_t exposureTime) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->fstop = fstop;
        snapshot->iso = iso;
        snapshot->lux = lux;
        snapshot->exposureTime = exposureTime;
    }
}

void HandWritten::updateAnchorFrame(const std::string& image, int32_t anchorFrame) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->anchorFrame = anchorFrame;
    }
}

void HandWritten::updateVndResultInfo(const std::string& image, uint32_t resultId,
                                      int32_t errorCode) {
    std::lock_guard<std::mutex> lock(mMutex);
    Snapshot* snapshot = find(image);
    if (snapshot == nullptr) {
        return;
    }
    if (snapshot->vendorResults.size() < snapshot->expectedResultIds.size()) {
        for (int32_t id : snapshot->expectedResultIds) {
            snapshot->vendorResults[id] = "not_return";
        }
    }
    const char* text = ResultErrorCodeToChar[errorCode];
    snapshot->vendorResults[static_cast<int32_t>(resultId)] = text;
    if (errorCode != 0) {
        fail(*snapshot, image, "vendor result error");
        mLogger->warn("had error {}", text);
    }
}

void HandWritten::updateVndResultInfo(const std::string& image,
                                      const std::map<int32_t, std::string>& info) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->vendorResults = info;
    }
}

void HandWritten::updateZuAlgoInfo(const std::string& image,
                                   const std::vector<std::string>& algoList) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->algoList = algoList;
        for (const std::string& entry : algoList) {
            snapshot->nodes.try_emplace(entry.substr(0, entry.find(':')));
        }
    }
    mLogger->info("algorithms of image {}, {} in flight", image, mSnapshots.size());
}

void HandWritten::updateZuAlgoInfo(const std::string& image,
                                   const camInfosync::SnapshotInfo::ZuAlgoInfo& info) {
    std::lock_guard<std::mutex> lock(mMutex);
    Snapshot* snapshot = find(image);
    if (snapshot == nullptr) {
        return;
    }
    snapshot->algoList = info.algoList;
    snapshot->nodes.clear();
    for (const auto& [node, time] : info.algoTimeA) {
        snapshot->nodes[node].first = time;
    }
    for (const auto& [node, time] : info.algoTimeB) {
        snapshot->nodes[node].second = time;
    }
    for (const auto& [node, time] : info.algoTimeC) {
        snapshot->nodes[node].third = time;
        snapshot->nodes[node].completed = true;
    }
    for (const auto& [node, state] : info.algoState) {
        snapshot->nodes[node].state = state;
    }
}

void HandWritten::updateSnapshotErrorInfo(const std::string& image, const char* text) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->hasError = true;
        snapshot->errors.emplace_back(text);
    }
}

void HandWritten::updatePostProcInfo(const std::map<std::string, uint32_t>& info) {
    std::lock_guard<std::mutex> lock(mMutex);
    mPostProcInfo = info;
}

void HandWritten::updateSnapshotTimeInfo(const std::string& image, uint32_t stage) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::lock_guard<std::mutex> lock(mMutex);
    Snapshot* snapshot = find(image);
    if (snapshot == nullptr || stage >= std::size(TimeStageToChar)) {
        return;
    }
    auto& times = snapshot->timeInfo;
    const int64_t interval = milliseconds(snapshot->createTime, now);
    switch (stage) {
        case 0:
            times[TimeStageToChar[0]] = -1;
            snapshot->requestTime = now;
            break;
        case 3:
        case 13:
            times[TimeStageToChar[3]] = interval;
            times[TimeStageToChar[13]] = interval;
            break;
        case 6:
            times[TimeStageToChar[6]] = interval - times[TimeStageToChar[4]];
            break;
        case 7:
        case 11:
            times[TimeStageToChar[stage]] = 0;
            break;
        default:
            times[TimeStageToChar[stage]] = interval;
    }
}

void HandWritten::updateSnapshotTimeInfo(const std::string& image,
                                         const std::map<std::string, int64_t>& timeInfo) {
    std::lock_guard<std::mutex> lock(mMutex);
    Snapshot* snapshot = find(image);
    if (snapshot == nullptr) {
        return;
    }
    for (const char* stage : TimeStageToChar) {
        if (const auto given = timeInfo.find(stage); given != timeInfo.end()) {
            snapshot->timeInfo[given->first] = given->second;
            mLogger->info("image {}, stage {}: {}", image, stage, given->second);
        }
    }
}

void HandWritten::updateNodeProcTime(const std::string& image, const std::string& node,
                                     double first, double second, double third) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        Node& entry = snapshot->nodes[node];
        entry.first = first;
        entry.second = second;
        entry.third = third;
        entry.completed = true;
        if (second == -1.0) {
            fail(*snapshot, image, "node process time out");
        }
    }
    mLogger->info("node of image {}, {} in flight", image, mSnapshots.size());
}

void HandWritten::updateNodeProcState(const std::string& image, const std::string& node,
                                      int32_t state) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        snapshot->nodes[node].state = NodeProcInfoToChar[state];
        if (state != 0) {
            fail(*snapshot, image, "node process error");
        }
    }
}

void HandWritten::updateNodeProcState(const std::string& image,
                                      const std::map<std::string, std::string>& states) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (Snapshot* snapshot = find(image)) {
        for (const auto& [node, state] : states) {
            snapshot->nodes[node].state = state;
        }
    }
}
