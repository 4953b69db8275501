#define INFOSYNC_MANAGER_SOURCE
#include "InfoSynchronizerManager.h"

#include <string.h>
#include <time.h>

#include <functional>
#include <iterator>
#include <utility>

#include "Log.h"
#include "Saturate.h"

namespace camInfosync {
namespace {

constexpr char kLogTag[] = "kelo-InfoSynchronizer";

constexpr char kCollectEnableCommand[] = "snapshotInfoCollectEnable";
constexpr char kNotReturned[] = "not_return";

// Holds a queue's mutex for one record operation.
class INFOSYNC_SCOPED_CAPABILITY QueueGuard {
  public:
    explicit QueueGuard(RequestRecordQueue& queue) INFOSYNC_ACQUIRE(queue.mutex) : mQueue(queue) {
        // Deliberate: passes the mutex once before holding it. No result depends on it; keep it.
        mQueue.mutex.lock();
        mQueue.mutex.unlock();
        mQueue.mutex.lock();
    }
    ~QueueGuard() INFOSYNC_RELEASE() { mQueue.mutex.unlock(); }
    QueueGuard(const QueueGuard&) = delete;
    QueueGuard& operator=(const QueueGuard&) = delete;

  private:
    RequestRecordQueue& mQueue;
};

RequestRecord* lookUp(RequestRecordQueue& queue, const std::string& imageName)
        INFOSYNC_REQUIRES(queue.mutex) {
    const auto position = queue.records.find(imageName);
    return position != queue.records.end() ? position->second.get() : nullptr;
}

RequestRecord* findOrWarn(RequestRecordQueue& queue, const std::string& imageName,
                          site::LogSite origin) INFOSYNC_REQUIRES(queue.mutex) {
    RequestRecord* record = lookUp(queue, imageName);
    if (record == nullptr) {
        INFOSYNC_LOGW(origin, "can't find imageName: %s", imageName.c_str());
    }
    return record;
}

unsigned long countRecords(const RequestRecordQueue& queue) INFOSYNC_REQUIRES(queue.mutex) {
    return queue.records.size();
}

unsigned long lockAndCount(const std::shared_ptr<RequestRecordQueue>& queue) {
    if (queue == nullptr) {
        return 0;
    }
    std::lock_guard<std::mutex> lock(queue->mutex);
    return countRecords(*queue);
}

void markFailed(RequestRecordQueue& queue, RequestRecord& record, std::string imageName,
                const char* text) INFOSYNC_REQUIRES(queue.mutex) {
    record.hasError = true;
    queue.errorImageNames.push_back(std::move(imageName));
    record.errorInfo.emplace_back(text);
}

// The table entry of a caller's code, or null after a warning.
template <size_t Size>
const char* textOrWarn(const char* const (&table)[Size], int32_t code, site::LogSite origin) {
    if (code < 0 || static_cast<size_t>(code) >= Size) {
        INFOSYNC_LOGW(origin, "code out of range: %d", code);
        return nullptr;
    }
    return table[code];
}

// Milliseconds from `begin` to `end`.
// Deliberate: no borrow from the seconds, division toward zero, and the low 32 bits only.
int32_t intervalMs(const timespec& begin, const timespec& end) {
    const int64_t ms = (end.tv_sec - begin.tv_sec) * int64_t{1000} +
                       (end.tv_nsec - begin.tv_nsec) / int64_t{1000000};
    return static_cast<int32_t>(static_cast<uint32_t>(ms));
}

// The text of a time stage, ready to look up with.
const std::string& stageKey(uint32_t stage) {
    static const std::vector<std::string> keys(std::begin(TimeStageToChar),
                                               std::end(TimeStageToChar));
    return keys[stage];
}

// Stores what a time stage other than 0 stands for.
// Deliberate: stages 3 and 13 write two keys, 6 a difference, 7 and 11 a constant 0.
void storeStage(std::map<std::string, int64_t>& timeInfo, uint32_t stage, int32_t interval) {
    switch (stage) {
        case 3:
        case 13:
            timeInfo[stageKey(3)] = interval;
            timeInfo[stageKey(13)] = interval;
            break;
        case 6: {
            // A request stage that is missing counts as 0, and is put in place as such.
            const auto requested = static_cast<double>(timeInfo[stageKey(4)]);
            timeInfo[stageKey(6)] = truncateSaturated<int64_t>(interval - requested);
            break;
        }
        case 7:
        case 11:
            timeInfo[stageKey(stage)] = 0;
            break;
        default:
            timeInfo[stageKey(stage)] = interval;
            break;
    }
}

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

// What decides whether a snapshot operation does anything.
struct CollectionSwitch {
    const char* cmdVal;  // the executor's; valid until it is asked again
    bool collectEnabled;

    bool isOn() const { return camQuillSupported && collectEnabled; }
};

// The executor is asked every time, also when collection is forced.
CollectionSwitch readCollectionSwitch() {
    auto& synchronizers = InfoSynchronizerManager::getInstance().mSynchronizers;
    const auto* cmdVal = static_cast<const char*>(
            synchronizers[INFO_SYNC_TYPE_CMD]->requestCmd(kCollectEnableCommand));
    return {cmdVal, infoSyncCollectForceEnabled || strcmp(cmdVal, "enabled") == 0};
}

}  // namespace

InfoSynchronizerManager::InfoSynchronizerManager() {
    INFOSYNC_LOGI(site::kConstructEnter, "Construct Enter");
    stageKey(0);  // makes the keys now: what is made before a manager outlives it at process exit
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

void InfoSynchronizerManager::request(InfoSyncType type, const void* in, void** out) {
    switch (type) {
        case INFO_SYNC_TYPE_COLLECT:
        case INFO_SYNC_TYPE_COLLECT_ALT:
            mSynchronizers[type]->requestInfo(in);
            return;
        case INFO_SYNC_TYPE_CMD: {
            if (out == nullptr) {
                INFOSYNC_LOGW(INFOSYNC_HERE("request"), "no place for the result given");
                return;
            }
            void* result = mSynchronizers[type]->requestCmd(in);
            if (result != nullptr) {  // null only for a null key
                *out = result;
            }
            return;
        }
        default:
            return;
    }
}

void InfoSynchronizerManager::registerSnapshotRequestRecord(std::string imageName) {
    if (!readCollectionSwitch().isOn()) {
        return;
    }
    const std::shared_ptr<RequestRecordQueue> queue = getInstance().mRequestRecordQueue;
    if (queue != nullptr) {
        queue->emplace_back(imageName);
    }
    if (logging::toAny(ANDROID_LOG_INFO)) {
        const unsigned long size = lockAndCount(queue);
        INFOSYNC_LOGI(INFOSYNC_HERE("registerSnapshotRequestRecord"),
                      "register image %s, queue size: %lu", imageName.c_str(), size);
    }
}

void InfoSynchronizerManager::unregisterSnapshotRequestRecord(std::string imageName) {
    if (!readCollectionSwitch().isOn()) {
        return;
    }
    const std::shared_ptr<RequestRecordQueue> queue = getInstance().mRequestRecordQueue;
    if (queue != nullptr) {
        queue->remove(imageName);
    }
    if (logging::toAny(ANDROID_LOG_INFO)) {
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
    if (!collection.isOn()) {
        return;
    }
    InfoSynchronizerManager& manager = getInstance();
    const std::shared_ptr<RequestRecordQueue> queue = manager.mRequestRecordQueue;
    QueueGuard guard(*queue);
    RequestRecord* record = lookUp(*queue, imageName);
    // Deliberate: flushes type 0 only; the second collector is reached through request().
    if (record != nullptr && type == INFO_SYNC_TYPE_COLLECT) {
        manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT]->requestInfo(record);
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
        FrameInfo& frame = record->frameInfo;
        frame.frameNumber = frameNumber;
        frame.timestamp = std::move(timestamp);
        frame.frameExtra = frameExtra;
        frame.imageName = imageName;
        if (frame.camIds.empty()) {
            frame.camIds = std::move(camIds);
        } else {
            frame.camIds.insert(frame.camIds.end(), camIds.begin(), camIds.end());
        }
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
    info.uiExtra = std::move(uiExtra);
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
    if (record == nullptr) {
        return;
    }
    record->snapshotInfo.requestInfo.anchorFrame = anchorFrame;
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
    SnapshotInfo::VendorResultInfo& results = record->snapshotInfo.vendorResultInfo;
    const std::vector<int32_t>& expected = record->snapshotInfo.requestInfo.expectedResultIds;
    // Deliberate: overwrites results that have come already, and counts repeated ids each time.
    if (results.size() < expected.size()) {
        for (int32_t id : expected) {
            results[id] = kNotReturned;
        }
    }
    results[static_cast<int32_t>(resultId)] = text;
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
    if (record == nullptr) {
        return;
    }
    record->snapshotInfo.vendorResultInfo.swap(info);
}

void InfoSynchronizerManager::updateZuAlgoInfo(std::string imageName,
                                               std::vector<std::string> algoList) {
    QueueGuard guard(*mRequestRecordQueue);
    mRequestRecordQueue->findByImageName(
            imageName, [&algoList](const std::shared_ptr<RequestRecord>& record) {
                SnapshotInfo::ZuAlgoInfo& algo = record->snapshotInfo.zuAlgoInfo;
                algo.algoList.swap(algoList);
                for (const std::string& entry : algo.algoList) {
                    std::string key = entry.substr(0, entry.find(':'));
                    seed(algo.algoTimeA, key, 0.0);
                    seed(algo.algoTimeB, key, 0.0);
                    seed(algo.algoState, std::move(key), "none");
                }
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
    if (record == nullptr) {
        return;
    }
    std::swap(record->snapshotInfo.zuAlgoInfo, info);
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
        timeInfo[stageKey(0)] = -1;
        record->requestTime = now;
        return;
    }
    // Deliberate: builds that manager if there is none yet, and makes no use of it.
    getInstance();
    if (stage < std::size(TimeStageToChar)) {
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
    for (uint32_t stage = 0; stage < std::size(TimeStageToChar); ++stage) {
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
        SnapshotInfo::ZuAlgoInfo& algo = record->snapshotInfo.zuAlgoInfo;
        algo.algoTimeA[nodeName] = first;
        algo.algoTimeB[nodeName] = second;
        algo.algoTimeC[std::move(nodeName)] = third;
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
