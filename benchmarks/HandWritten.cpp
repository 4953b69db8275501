// The baseline: another libcaminfosync.so, which does the real one's job as a careful team would
// write it by hand. Records lie in a map behind a mutex that is passed once, texts are built by a
// JSON library, log lines by a log library and switched off at run time. A report is sent from one
// copy of the record, with the mutex released. Every operation finds its record by its key.

#include "InfoSynchronizerManager.h"

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <spdlog/common.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/null_sink.h>
#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "IntentAwareSys.h"
#include "OverlapClientTmpl.h"

namespace camInfosync {
namespace {

using M = InfoSynchronizerManager;

struct Store {
    Store() { log.set_level(spdlog::level::off); }

    spdlog::logger log{"snapshots", std::make_shared<spdlog::sinks::null_sink_mt>()};
    std::mutex mutex;  // guards what follows
    std::map<std::string, RequestRecord> records;
    std::map<std::string, uint32_t> postProcInfo;
    std::vector<std::string> failedImages;
    std::map<std::string, std::string> answers;
};

Store store;

bool isCollecting() {
    auto* const service = InfoSynchronizer::mIntentAwareImpl;
    return service != nullptr && service->queryValue("snapshotInfoCollectEnable") == "enabled";
}

// Gives the record to `change`, with the mutex held.
template <typename Change>
void update(const std::string& image, Change change) {
    const std::lock_guard<std::mutex> lock(store.mutex);
    const auto position = store.records.find(image);
    if (position != store.records.end()) {
        change(position->second, position->second.snapshotInfo);
    } else {
        store.log.warn("can't find image {}", image);
    }
}

void fail(RequestRecord& record, const std::string& image, const char* text) {
    record.hasError = true;
    record.errorInfo.emplace_back(text);
    store.failedImages.push_back(image);
    store.log.warn("image {}: {}", image, text);
}

using Json = nlohmann::ordered_json;  // keeps the members in the report's order

void sendEvent(const std::string& image, const Json& event) {
    const std::string text = event.dump();
    store.log.info("event {}", text);
    InfoSynchronizer::mIntentAwareImpl->reportEvent(image, text);
}

// Built field by field, which is quicker than the nested lists of that library's manual.
void sendNodeEvent(const std::string& image, const std::string& node, double time,
                   const std::string& camId, const char* stage) {
    Json event;
    Json& fields = event[node];
    fields["pipeline_name"] = image;
    fields["timestamp"] = std::to_string(static_cast<int64_t>(time));
    fields["cam_id"] = camId;
    fields["node_stage"] = stage;
    sendEvent(image, event);
}

void sendEvents(const std::string& image, const RequestRecord& record, const std::string& camId) {
    Json event;
    Json& fields = event["submit-request"];
    fields["pipeline_name"] = image;
    fields["timestamp"] = record.frameInfo.timestamp;
    sendEvent(image, event);
    const SnapshotInfo::ZuAlgoInfo& algo = record.snapshotInfo.zuAlgoInfo;
    for (const auto& [node, startTime] : algo.algoTimeA) {
        sendNodeEvent(image, node, startTime, camId, "0");
        if (const auto done = algo.algoTimeC.find(node); done != algo.algoTimeC.end()) {
            sendNodeEvent(image, node, done->second, camId, "2");
        }
    }
}

void report(const std::string& image, const RequestRecord& record) {
    IntentAwareSys* const service = InfoSynchronizer::mIntentAwareImpl;
    const SnapshotInfo& info = record.snapshotInfo;
    const std::vector<uint32_t>& camIds = record.frameInfo.camIds;
    const std::string camId = camIds.empty() ? std::string() : std::to_string(camIds.front());
    service->setParam(image, "iso", std::to_string(info.iso));
    service->setParam(image, "lux", std::to_string(info.lux));
    service->setParam(image, "face_detect", std::to_string(info.faceDetect));
    service->setParam(image, "cam_mode", std::to_string(info.camMode));
    service->setParam(image, "cam_id", camIds.empty() ? "-1" : camId);
    service->setParam(image, "fstop", std::to_string(info.fstop));
    service->setParam(image, "zoom_ratio", std::to_string(static_cast<int32_t>(info.zoomRatio)));
    service->setParam(image, "exposure_time", std::to_string(info.exposureTime));
    sendEvents(image, record, camId);
    service->finishReport(image, 1022, 10000);
}

}  // namespace

IntentAwareSys* InfoSynchronizer::mIntentAwareImpl =
        zu_hal_overlap::OverlapClientTmpl::GetIntentAwareSys();

M::InfoSynchronizerManager() = default;
M::~InfoSynchronizerManager() = default;

M& M::getInstance() {
    static M instance;
    return instance;
}

void M::request(InfoSyncType type, const void* in, void** out) {
    if (type == INFO_SYNC_TYPE_CMD) {
        const auto* key = static_cast<const char*>(in);
        std::string answer = InfoSynchronizer::mIntentAwareImpl->queryValue(key);
        const std::lock_guard<std::mutex> lock(store.mutex);
        std::string& kept = store.answers[key];
        kept = std::move(answer);
        *out = kept.data();
    } else {
        const auto& record = *static_cast<const RequestRecord*>(in);
        report(record.frameInfo.imageName, record);
    }
}

void M::registerSnapshotRequestRecord(std::string imageName) {
    if (isCollecting()) {
        const std::lock_guard<std::mutex> lock(store.mutex);
        const bool isNew = store.records.try_emplace(imageName, REQUEST_TYPE_DEFAULT).second;
        store.log.info("register image {}, new: {}", imageName, isNew);
    }
}

void M::unregisterSnapshotRequestRecord(std::string imageName) {
    if (isCollecting()) {
        const std::lock_guard<std::mutex> lock(store.mutex);
        store.log.info("unregister image {}, known: {}", imageName, store.records.erase(imageName));
    }
}

void M::snapshotRequestInfoFlush(std::string imageName, InfoSyncType type) {
    if (!isCollecting() || type != INFO_SYNC_TYPE_COLLECT) {
        return;
    }
    std::optional<RequestRecord> copy;
    update(imageName, [&](auto& record, auto&) { copy = record; });
    if (copy) {
        report(imageName, *copy);
        store.log.info("flushed image {}", imageName);
    }
}

void M::updateFrameInfo(std::string imageName, uint32_t frameNumber, std::string timestamp,
                        std::vector<uint32_t> camIds, uint32_t frameExtra) {
    update(imageName, [&](auto& record, auto& /*info*/) {
        std::vector<uint32_t>& ids = record.frameInfo.camIds;
        ids.insert(ids.end(), camIds.begin(), camIds.end());
        record.frameInfo = {frameNumber, std::move(timestamp), std::move(ids), frameExtra,
                            imageName};
        store.log.info("frame of image {}, {} in flight", imageName, store.records.size());
    });
}

void M::updateRequestInfo(std::string imageName, int32_t reqValueA, int32_t reqValueB, bool reqFlag,
                          uint64_t reqValue64, std::vector<int32_t> reqIdsA,
                          std::vector<int32_t> expectedResultIds) {
    update(imageName, [&](auto& /*record*/, auto& info) {
        info.requestInfo = {reqValueA,  reqValueB,          info.requestInfo.anchorFrame, reqFlag,
                            reqValue64, std::move(reqIdsA), std::move(expectedResultIds)};
    });
}

void M::updateUIInfo(std::string imageName, RequestType requestType, uint32_t camMode,
                     int32_t faceDetect, float zoomRatio, std::string uiExtra) {
    update(imageName, [&](auto& /*record*/, auto& info) {
        info.requestType = requestType;
        info.camMode = camMode;
        info.faceDetect = faceDetect;
        info.zoomRatio = zoomRatio;
        info.uiExtra = std::move(uiExtra);
    });
}

void M::updateAnchor3aInfo(std::string imageName, float fstop, int32_t iso, float lux,
                           int64_t exposureTime) {
    update(imageName, [&](auto& /*record*/, auto& info) {
        info.fstop = fstop;
        info.iso = iso;
        info.lux = lux;
        info.exposureTime = exposureTime;
    });
}

void M::updateAnchorFrame(std::string imageName, int32_t anchorFrame) {
    update(imageName, [&](auto&, auto& info) { info.requestInfo.anchorFrame = anchorFrame; });
}

void M::updateVndResultInfo(std::string imageName, uint32_t resultId, int32_t errorCode) {
    update(imageName, [&](auto& record, auto& info) {
        if (info.vendorResultInfo.size() < info.requestInfo.expectedResultIds.size()) {
            for (const int32_t id : info.requestInfo.expectedResultIds) {
                info.vendorResultInfo[id] = "not_return";
            }
        }
        info.vendorResultInfo[static_cast<int32_t>(resultId)] = ResultErrorCodeToChar[errorCode];
        if (errorCode != 0) {
            fail(record, imageName, "vendor result error");
        }
    });
}

void M::updateVndResultInfo(std::string imageName, SnapshotInfo::VendorResultInfo results) {
    update(imageName, [&](auto&, auto& info) { info.vendorResultInfo = std::move(results); });
}

void M::updateZuAlgoInfo(std::string imageName, std::vector<std::string> algoList) {
    update(imageName, [&](auto& /*record*/, auto& info) {
        SnapshotInfo::ZuAlgoInfo& algo = info.zuAlgoInfo;
        algo.algoList = std::move(algoList);
        for (const std::string& entry : algo.algoList) {
            const std::string node = entry.substr(0, entry.find(':'));
            algo.algoTimeA.try_emplace(node);
            algo.algoTimeB.try_emplace(node);
            algo.algoState.try_emplace(node, "none");
        }
        store.log.info("algorithms of image {}, {} in flight", imageName, store.records.size());
    });
}

void M::updateZuAlgoInfo(std::string imageName, SnapshotInfo::ZuAlgoInfo algo) {
    update(imageName, [&](auto&, auto& info) { info.zuAlgoInfo = std::move(algo); });
}

void M::updateSnapshotErrorInfo(std::string imageName, const char* text) {
    update(imageName, [&](auto& record, auto& /*info*/) {
        record.hasError = true;
        record.errorInfo.emplace_back(text);
    });
}

void M::updatePostProcInfo(std::map<std::string, uint32_t> info) {
    const std::lock_guard<std::mutex> lock(store.mutex);
    store.postProcInfo = std::move(info);
}

void M::updateSnapshotTimeInfo(std::string imageName, uint32_t stage) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    update(imageName, [&](auto& record, auto& info) {
        if (stage >= std::size(TimeStageToChar)) {
            return;
        }
        int64_t& time = info.timeInfo[TimeStageToChar[stage]];
        time = stage == 7 || stage == 11
                       ? 0
                       : (now.tv_sec - record.createTime.tv_sec) * 1000 +
                                 (now.tv_nsec - record.createTime.tv_nsec) / 1000000;
        if (stage == 0) {
            time = -1;
            record.requestTime = now;
        } else if (stage == 3 || stage == 13) {
            info.timeInfo[TimeStageToChar[16 - stage]] = time;
        } else if (stage == 6) {
            time -= info.timeInfo[TimeStageToChar[4]];
        }
    });
}

void M::updateSnapshotTimeInfo(std::string imageName, std::map<std::string, int64_t> timeInfo) {
    update(imageName, [&](auto& /*record*/, auto& info) {
        for (const char* stage : TimeStageToChar) {
            if (const auto given = timeInfo.find(stage); given != timeInfo.end()) {
                info.timeInfo[given->first] = given->second;
                store.log.info("image {}, stage {}: {}", imageName, stage, given->second);
            }
        }
    });
}

void M::updateNodeProcTime(std::string imageName, std::string nodeName, double first, double second,
                           double third) {
    update(imageName, [&](auto& record, auto& info) {
        info.zuAlgoInfo.algoTimeA[nodeName] = first;
        info.zuAlgoInfo.algoTimeB[nodeName] = second;
        info.zuAlgoInfo.algoTimeC[nodeName] = third;
        if (second == -1.0) {
            fail(record, imageName, "node process time out");
        }
        store.log.info("node of image {}, {} in flight", imageName, store.records.size());
    });
}

void M::updateNodeProcState(std::string imageName, std::string nodeName, int32_t state) {
    update(imageName, [&](auto& record, auto& info) {
        info.zuAlgoInfo.algoState[nodeName] = NodeProcInfoToChar[state];
        if (state != 0) {
            fail(record, imageName, "node process error");
        }
    });
}

void M::updateNodeProcState(std::string imageName, std::map<std::string, std::string> states) {
    update(imageName, [&](auto& /*record*/, auto& info) {
        for (auto& [node, state] : states) {
            info.zuAlgoInfo.algoState[node] = std::move(state);
        }
    });
}

}  // namespace camInfosync
