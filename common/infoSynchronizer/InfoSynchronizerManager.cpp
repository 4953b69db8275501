#include "InfoSynchronizerManager.h"

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <android/log.h>

#include "CollectionSwitch.h"
#include "Log.h"
#include "LogSites.h"
#include "QueueAccess.h"
#include "QueueGuard.h"
#include "ThreadAnnotations.h"
#include "TimeStages.h"
#include "UpdateRules.h"

namespace camInfosync {
namespace {

constexpr char kLogTag[] = "kelo-InfoSynchronizer";

RequestRecord* findOrWarn(RequestRecordQueue& queue, const std::string& imageName,
                          site::LogSite origin) INFOSYNC_REQUIRES(queue.mutex) {
    RequestRecord* record = lookUp(queue, imageName);
    if (record == nullptr) {
        INFOSYNC_LOGW(origin, "can't find imageName: %s", imageName.c_str());
    }
    return record;
}

// The table entry of a caller's code, or null after a warning.
template <size_t Size>
const char* textOrWarn(const char* const (&table)[Size], int32_t code, site::LogSite origin) {
    if (static_cast<size_t>(code) >= Size) {  // a negative code is a large one then
        INFOSYNC_LOGW(origin, "code out of range: %d", code);
        return nullptr;
    }
    return table[code];
}

CollectionSwitch readCollectionSwitch() {
    // Found, here and below, and not looked up by []: that would count as a write to the map.
    const auto& synchronizers = InfoSynchronizerManager::getInstance().mSynchronizers;
    return CollectionSwitch(*synchronizers.find(INFO_SYNC_TYPE_CMD)->second, camQuillSupported,
                            infoSyncCollectForceEnabled);
}

}  // namespace

InfoSynchronizerManager::InfoSynchronizerManager() {
    INFOSYNC_LOGI(site::kConstructEnter, "Construct Enter");
    stageKey(0);  // made before the manager, so that a manager used at process exit still has them
    mSynchronizers[INFO_SYNC_TYPE_COLLECT] =
            std::make_shared<InfoCollector>(INFO_SYNC_TYPE_COLLECT);
    mSynchronizers[INFO_SYNC_TYPE_CMD] = std::make_shared<CmdExecutor>(INFO_SYNC_TYPE_CMD);
    mSynchronizers[INFO_SYNC_TYPE_COLLECT_ALT] =
            std::make_shared<InfoCollector>(INFO_SYNC_TYPE_COLLECT_ALT);
    mRequestRecordQueue = std::make_shared<RequestRecordQueue>();
    mThreadPool = std::make_unique<ThreadPool>(1, 10);
    // Deliberate: "Eixt" is how the message is known.
    INFOSYNC_LOGI(site::kConstructExit, "Construct Eixt");
}

InfoSynchronizerManager::~InfoSynchronizerManager() {
    mSynchronizers.clear();
    mRequestRecordQueue.reset();
}

InfoSynchronizerManager& InfoSynchronizerManager::getInstance() {
    static InfoSynchronizerManager instance;
    return instance;
}

void InfoSynchronizerManager::request(InfoSyncType type, const void* in, void** out) {
    switch (type) {
        case INFO_SYNC_TYPE_COLLECT:
        case INFO_SYNC_TYPE_COLLECT_ALT:
            mSynchronizers.find(type)->second->requestInfo(in);
            return;
        case INFO_SYNC_TYPE_CMD:
            if (out == nullptr) {
                INFOSYNC_LOGW(INFOSYNC_HERE("request"), "no place for the result given");
                return;
            }
            *out = mSynchronizers.find(type)->second->requestCmd(in);
            return;
        default:
            return;
    }
}

void InfoSynchronizerManager::registerSnapshotRequestRecord(std::string imageName) {
    if (!readCollectionSwitch().isOn) {
        return;
    }
    const std::shared_ptr<RequestRecordQueue> queue = getInstance().mRequestRecordQueue;
    if (queue != nullptr) {
        queue->emplace_back(imageName);
    }
    if (logging::isOpen(ANDROID_LOG_INFO)) {
        const unsigned long size = lockAndCount(queue);
        INFOSYNC_LOGI(INFOSYNC_HERE("registerSnapshotRequestRecord"),
                      "register image %s, queue size: %lu", imageName.c_str(), size);
    }
}

void InfoSynchronizerManager::unregisterSnapshotRequestRecord(std::string imageName) {
    if (!readCollectionSwitch().isOn) {
        return;
    }
    const std::shared_ptr<RequestRecordQueue> queue = getInstance().mRequestRecordQueue;
    if (queue != nullptr) {
        queue->remove(imageName);
    }
    if (logging::isOpen(ANDROID_LOG_INFO)) {
        const unsigned long size = lockAndCount(queue);
        INFOSYNC_LOGI(INFOSYNC_HERE("unregisterSnapshotRequestRecord"),
                      "unregister image %s, queue size: %lu", imageName.c_str(), size);
    }
}

void InfoSynchronizerManager::snapshotRequestInfoFlush(std::string imageName, InfoSyncType type) {
    const CollectionSwitch collection = readCollectionSwitch();
    // Deliberate: two blanks before "infoSyncCollectEnabled", and below before "snapshot".
    INFOSYNC_LOGI(site::kFlushSwitch,
                  "camQuillSupported:%d,  infoSyncCollectEnabled:%d, cmdVal: %s",
                  static_cast<int>(camQuillSupported), static_cast<int>(collection.collectEnabled),
                  collection.cmdVal);
    if (!collection.isOn) {
        return;
    }
    InfoSynchronizerManager& manager = getInstance();
    const std::shared_ptr<RequestRecordQueue> queue = manager.mRequestRecordQueue;
    QueueGuard guard(*queue);
    RequestRecord* record = lookUp(*queue, imageName);
    // Deliberate: flushes type 0 only; the second collector is reached through request().
    if (record != nullptr && type == INFO_SYNC_TYPE_COLLECT) {
        manager.mSynchronizers.find(type)->second->requestInfo(record);
    }
    INFOSYNC_LOGI(site::kFlushDone, "flush image %s  snapshotRequestInfo to infosync module",
                  imageName.c_str());
}

void InfoSynchronizerManager::updateFrameInfo(std::string imageName, uint32_t frameNumber,
                                              std::string timestamp, std::vector<uint32_t> camIds,
                                              uint32_t frameExtra) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateFrameInfo"));
    if (record != nullptr) {
        storeFrame(record->frameInfo, frameNumber, timestamp, camIds, frameExtra, imageName);
    }
    // Deliberate: two blanks around the name here and in the other "update" lines.
    INFOSYNC_LOGI(INFOSYNC_HERE("updateFrameInfo"), "update  image %s  frameinfo, queue size: %lu",
                  imageName.c_str(), countRecords(*mRequestRecordQueue));
}

void InfoSynchronizerManager::updateRequestInfo(std::string imageName, int32_t reqValueA,
                                                int32_t reqValueB, bool reqFlag,
                                                uint64_t reqValue64, std::vector<int32_t> reqIdsA,
                                                std::vector<int32_t> expectedResultIds) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateRequestInfo"));
    if (record == nullptr) {
        return;
    }
    SnapshotInfo::RequestInfo& info = record->snapshotInfo.requestInfo;
    info.reqValueA = reqValueA;
    info.reqValueB = reqValueB;
    info.reqFlag = reqFlag;
    info.reqValue64 = reqValue64;
    // Swapped, here and below: the old content is destroyed with the argument, after the lock.
    info.reqIdsA.swap(reqIdsA);
    info.expectedResultIds.swap(expectedResultIds);
}

void InfoSynchronizerManager::updateUIInfo(std::string imageName, RequestType requestType,
                                           uint32_t camMode, int32_t faceDetect, float zoomRatio,
                                           std::string uiExtra) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateUIInfo"));
    if (record == nullptr) {
        return;
    }
    SnapshotInfo& info = record->snapshotInfo;
    info.requestType = requestType;
    info.camMode = camMode;
    info.faceDetect = faceDetect;
    info.zoomRatio = zoomRatio;
    info.uiExtra.swap(uiExtra);
}

void InfoSynchronizerManager::updateAnchor3aInfo(std::string imageName, float fstop, int32_t iso,
                                                 float lux, int64_t exposureTime) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record = lookUp(*mRequestRecordQueue, imageName);
    if (record == nullptr) {
        // Deliberate: the one update whose warning has this prefix.
        INFOSYNC_LOGW(INFOSYNC_HERE("updateAnchor3aInfo"),
                      "[InfoSynchronizer]can't find imageName: %s", imageName.c_str());
        return;
    }
    SnapshotInfo& info = record->snapshotInfo;
    info.fstop = fstop;
    info.iso = iso;
    info.lux = lux;
    info.exposureTime = exposureTime;
}

void InfoSynchronizerManager::updateAnchorFrame(std::string imageName, int32_t anchorFrame) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateAnchorFrame"));
    if (record != nullptr) {
        record->snapshotInfo.requestInfo.anchorFrame = anchorFrame;
    }
}

void InfoSynchronizerManager::updateVndResultInfo(std::string imageName, uint32_t resultId,
                                                  int32_t errorCode) {
    const char* text =
            textOrWarn(ResultErrorCodeToChar, errorCode, INFOSYNC_HERE("updateVndResultInfo"));
    if (text == nullptr) {
        return;
    }
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateVndResultInfo"));
    if (record == nullptr) {
        return;
    }
    storeVendorResult(record->snapshotInfo, static_cast<int32_t>(resultId), text);
    if (errorCode != 0) {
        markFailed(*mRequestRecordQueue, *record, std::move(imageName), "vendor result error");
        INFOSYNC_LOGW(INFOSYNC_HERE("updateVndResultInfo"), "had error %s, do action!", text);
    }
}

void InfoSynchronizerManager::updateVndResultInfo(std::string imageName,
                                                  SnapshotInfo::VendorResultInfo info) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateVndResultInfo"));
    if (record != nullptr) {
        record->snapshotInfo.vendorResultInfo.swap(info);
    }
}

void InfoSynchronizerManager::updateZuAlgoInfo(std::string imageName,
                                               std::vector<std::string> algoList) {
    QueueGuard guard(*mRequestRecordQueue);
    mRequestRecordQueue->findByImageName(
            imageName, [&algoList](const std::shared_ptr<RequestRecord>& record) {
                replaceAlgoList(record->snapshotInfo.zuAlgoInfo, algoList);
                return false;
            });
    INFOSYNC_LOGI(INFOSYNC_HERE("updateZuAlgoInfo"),
                  "update  image %s  zuAlgoInfo, queue size: %lu", imageName.c_str(),
                  countRecords(*mRequestRecordQueue));
}

void InfoSynchronizerManager::updateZuAlgoInfo(std::string imageName,
                                               SnapshotInfo::ZuAlgoInfo info) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateZuAlgoInfo"));
    if (record != nullptr) {
        std::swap(record->snapshotInfo.zuAlgoInfo, info);
    }
}

void InfoSynchronizerManager::updateSnapshotErrorInfo(std::string imageName, const char* text) {
    if (text == nullptr) {
        INFOSYNC_LOGW(INFOSYNC_HERE("updateSnapshotErrorInfo"), "no error text for imageName: %s",
                      imageName.c_str());
        return;
    }
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record =
            findOrWarn(*mRequestRecordQueue, imageName, INFOSYNC_HERE("updateSnapshotErrorInfo"));
    if (record == nullptr) {
        return;
    }
    // Deliberate: not markFailed. An error reported this way is not listed in errorImageNames.
    record->hasError = true;
    record->errorInfo.emplace_back(text);
}

void InfoSynchronizerManager::updatePostProcInfo(std::map<std::string, uint32_t> info) {
    QueueGuard guard(*mRequestRecordQueue);
    mRequestRecordQueue->postProcInfo.swap(info);
}

void InfoSynchronizerManager::updateSnapshotTimeInfo(std::string imageName, uint32_t stage) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);  // first: waiting for the lock must not count
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record = lookUp(*mRequestRecordQueue, imageName);
    if (record == nullptr) {
        INFOSYNC_LOGW(site::kStageUnknown, "can't find imageName: %s, type:%d", imageName.c_str(),
                      static_cast<int32_t>(stage));
        return;
    }
    std::map<std::string, int64_t>& timeInfo = record->snapshotInfo.timeInfo;
    if (stage == 0) {
        timeInfo[stageKey(0)] = -1;  // Deliberate: no time; the time goes to requestTime
        record->requestTime = now;
        return;
    }
    // Deliberate: builds that manager if there is none yet, and makes no use of it.
    getInstance();
    if (stage < kTimeStages) {
        storeStage(timeInfo, stage, intervalMs(record->createTime, now));
    }
}

void InfoSynchronizerManager::updateSnapshotTimeInfo(std::string imageName,
                                                     std::map<std::string, int64_t> timeInfo) {
    QueueGuard guard(*mRequestRecordQueue);
    RequestRecord* record = lookUp(*mRequestRecordQueue, imageName);
    if (record == nullptr) {
        INFOSYNC_LOGW(site::kTimeMapUnknown, "can't find imageName: %s", imageName.c_str());
        return;
    }
    for (uint32_t stage = 0; stage < kTimeStages; ++stage) {
        const auto given = timeInfo.find(stageKey(stage));
        if (given == timeInfo.end()) {
            continue;
        }
        record->snapshotInfo.timeInfo[given->first] = given->second;
        // Deliberate: "%]lu" is how the message is known. What it prints is up to the log.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-extra-args"
        INFOSYNC_LOGI(site::kTimeMapStored, "imageName: %s  timeinfo [stage %s : interval %]lu",
                      imageName.c_str(), TimeStageToChar[stage], given->second);
#pragma GCC diagnostic pop
    }
}

void InfoSynchronizerManager::updateNodeProcTime(std::string imageName, std::string nodeName,
                                                 double first, double second, double third) {
    RequestRecordQueue& queue = *mRequestRecordQueue;
    auto visit = [&](const std::shared_ptr<RequestRecord>& record) INFOSYNC_REQUIRES(queue.mutex) {
        storeNodeTimes(record->snapshotInfo.zuAlgoInfo, nodeName, first, second, third);
        if (second == -1.0) {
            markFailed(queue, *record, imageName, "node process time out");
        }
        return false;
    };
    QueueGuard guard(queue);
    // By reference: a closure of this size would be moved to the heap.
    queue.findByImageName(imageName, std::ref(visit));
    INFOSYNC_LOGI(site::kNodeProcTime, "update  image %s  NodeProcTime, queue size: %lu",
                  imageName.c_str(), countRecords(queue));
}

void InfoSynchronizerManager::updateNodeProcState(std::string imageName, std::string nodeName,
                                                  int32_t state) {
    const char* text = textOrWarn(NodeProcInfoToChar, state, INFOSYNC_HERE("updateNodeProcState"));
    if (text == nullptr) {
        return;
    }
    RequestRecordQueue& queue = *mRequestRecordQueue;
    auto visit = [&](const std::shared_ptr<RequestRecord>& record) INFOSYNC_REQUIRES(queue.mutex) {
        record->snapshotInfo.zuAlgoInfo.algoState[std::move(nodeName)] = text;
        // Deliberate: a flushed task counts as an error like the others.
        if (state != 0) {
            markFailed(queue, *record, record->frameInfo.imageName, "node process error");
        }
        return false;
    };
    QueueGuard guard(queue);
    queue.findByImageName(std::move(imageName), std::ref(visit));
}

void InfoSynchronizerManager::updateNodeProcState(std::string imageName,
                                                  std::map<std::string, std::string> states) {
    QueueGuard guard(*mRequestRecordQueue);
    mRequestRecordQueue->findByImageName(
            std::move(imageName), [&states](const std::shared_ptr<RequestRecord>& record) {
                for (auto& [node, text] : states) {
                    record->snapshotInfo.zuAlgoInfo.algoState[node] = std::move(text);
                }
                return false;
            });
}

}  // namespace camInfosync
