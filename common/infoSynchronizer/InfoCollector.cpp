#include "InfoCollector.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "InfoSyncType.h"
#include "InfoSynchronizer.h"
#include "IntentAwareSys.h"
#include "Log.h"
#include "LogSites.h"
#include "NumberText.h"
#include "RequestRecord.h"
#include "Saturate.h"

namespace camInfosync {
namespace {

constexpr char kLogTag[] = "ZuAlgoEngine";

// The two integers that close a report. Their meaning is the service's own.
constexpr int32_t kFinishFirst = 1022;
constexpr int32_t kFinishSecond = 10000;

constexpr size_t kUsualEventSize = 256;  // of an event with names of up to 80 characters

// How a node's start event ends, and where the digit of its stage lies before the end.
constexpr std::string_view kStartEnd = R"(","node_stage":"0"}})";
constexpr size_t kStageFromEnd = 4;
static_assert(kStartEnd[kStartEnd.size() - kStageFromEnd] == '0');

// Sends the report on one record. The texts are concatenated as they are: names that hold
// quotes give a report that is no JSON, and the service is used to that.
class Report {
  public:
    // Keeps a reference: the record must outlive the report.
    explicit Report(const RequestRecord& record)
        : mRecord(record), mId(record.frameInfo.imageName) {
        mEvent.reserve(kUsualEventSize);
    }

    void send();

  private:
    void sendParams();
    void sendNodeEvents();
    template <typename Number>
    void sendParam(const char* key, Number value);
    void sendEvent();
    void buildSubmitEvent();
    void buildStartEvent(const std::string& node, double time);
    void turnIntoCompletionEvent(double time);

    const RequestRecord& mRecord;
    const std::string mId;
    std::string mEvent;     // the event being sent; one buffer for all
    size_t mTimeBegin = 0;  // where the time lies in a start event
    size_t mTimeEnd = 0;
    std::string mValue;  // the parameter value being sent
};

// The pointer to the intent-aware object is read afresh before each call.
template <typename Number>
void Report::sendParam(const char* key, Number value) {
    mValue = NumberText(value).text();
    if (InfoSynchronizer::mIntentAwareImpl != nullptr) {
        InfoSynchronizer::mIntentAwareImpl->setParam(mId, key, mValue);
    }
}

void Report::sendEvent() {
    if (InfoSynchronizer::mIntentAwareImpl != nullptr) {
        InfoSynchronizer::mIntentAwareImpl->reportEvent(mId, mEvent);
    }
}

void Report::buildSubmitEvent() {
    // Deliberate: a blank after the first brace here, and none in the node events.
    mEvent = R"({ "submit-request":{"pipeline_name":")";
    mEvent += mRecord.frameInfo.imageName;
    mEvent += R"(","timestamp":")";
    mEvent += mRecord.frameInfo.timestamp;
    mEvent += R"("}})";
}

void Report::buildStartEvent(const std::string& node, double time) {
    mEvent = R"({")";
    mEvent += node;
    mEvent += R"(":{"pipeline_name":")";
    mEvent += mId;
    mEvent += R"(","timestamp":")";
    mTimeBegin = mEvent.size();
    mEvent += NumberText(truncateSaturated<int64_t>(time)).text();
    mTimeEnd = mEvent.size();
    mEvent += R"(","cam_id":")";
    // Deliberate: unsigned and empty without a camera; the parameter is signed and -1 then.
    if (!mRecord.frameInfo.camIds.empty()) {
        mEvent += NumberText(mRecord.frameInfo.camIds.front()).text();
    }
    mEvent += kStartEnd;
}

// The two events of a node differ in the time and in the stage only.
void Report::turnIntoCompletionEvent(double time) {
    mEvent[mEvent.size() - kStageFromEnd] = '2';
    mEvent.replace(mTimeBegin, mTimeEnd - mTimeBegin,
                   NumberText(truncateSaturated<int64_t>(time)).text());
}

void Report::sendParams() {
    const SnapshotInfo& snapshot = mRecord.snapshotInfo;
    const std::vector<uint32_t>& camIds = mRecord.frameInfo.camIds;
    sendParam("iso", snapshot.iso);
    sendParam("lux", snapshot.lux);
    sendParam("face_detect", snapshot.faceDetect);
    sendParam("cam_mode", snapshot.camMode);
    sendParam("cam_id", camIds.empty() ? -1 : static_cast<int32_t>(camIds.front()));
    sendParam("fstop", snapshot.fstop);
    sendParam("zoom_ratio", truncateSaturated<int32_t>(snapshot.zoomRatio));
    sendParam("exposure_time", snapshot.exposureTime);
}

void Report::sendNodeEvents() {
    const SnapshotInfo::ZuAlgoInfo algo = mRecord.snapshotInfo.zuAlgoInfo;
    for (const auto& [node, startTime] : algo.algoTimeA) {
        buildStartEvent(node, startTime);
        INFOSYNC_LOGI(site::kStartEvent, "stime %s", mEvent.c_str());
        sendEvent();

        const auto completion = algo.algoTimeC.find(node);
        if (completion != algo.algoTimeC.end()) {
            turnIntoCompletionEvent(completion->second);
            INFOSYNC_LOGI(site::kCompletionEvent, "ctime %s", mEvent.c_str());
            sendEvent();
        }
    }
}

void Report::send() {
    buildSubmitEvent();
    INFOSYNC_LOGI(site::kSubmitEvent, "submitReq %s", mEvent.c_str());
    sendParams();
    sendEvent();
    sendNodeEvents();
    if (InfoSynchronizer::mIntentAwareImpl != nullptr) {
        InfoSynchronizer::mIntentAwareImpl->finishReport(mId, kFinishFirst, kFinishSecond);
    }
}

}  // namespace

InfoCollector::InfoCollector(InfoSyncType /*type*/) {}

InfoCollector::~InfoCollector() = default;

void InfoCollector::requestInfo(const void* in) {
    if (in == nullptr) {
        INFOSYNC_LOGW(INFOSYNC_HERE("requestInfo"), "no record given");
        return;
    }
    const RequestRecord record = *static_cast<const RequestRecord*>(in);
    Report(record).send();
}

}  // namespace camInfosync
