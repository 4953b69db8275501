#include "InfoCollector.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "InfoSyncType.h"
#include "InfoSynchronizer.h"
#include "IntentAwareSys.h"
#include "Log.h"
#include "LogSites.h"
#include "NumberText.h"
#include "RecordCopy.h"
#include "RequestRecord.h"
#include "Saturate.h"

namespace camInfosync {
namespace {

constexpr char kLogTag[] = "ZuAlgoEngine";

// The two integers that close a report. Their meaning is the service's own.
constexpr int32_t kFinishFirst = 1022;
constexpr int32_t kFinishSecond = 10000;

constexpr size_t kUsualEventSize = 256;  // of an event with names of up to 80 characters

// The event of a node. A report's node events differ in three places only, so that one text
// serves them all.
class NodeEvent {
  public:
    // Builds the event into `text`, whose memory it uses, without a node and a time.
    NodeEvent(std::string& text, const RecordCopy& record);

    void setNode(std::string_view node);
    void setTimeAndStage(double time, char stage);

  private:
    static constexpr std::string_view kBegin = R"({")";
    static constexpr std::string_view kEnd = R"(","node_stage":"0"}})";
    static constexpr size_t kStageFromEnd = 4;
    static_assert(kEnd[kEnd.size() - kStageFromEnd] == '0');

    std::string& mText;
    size_t mNodeSize = 0;
    size_t mTimeBegin;
    size_t mTimeSize = 0;
};

NodeEvent::NodeEvent(std::string& text, const RecordCopy& record) : mText(text) {
    mText = kBegin;
    mText += R"(":{"pipeline_name":")";
    mText += record.frameInfo.imageName;
    mText += R"(","timestamp":")";
    mTimeBegin = mText.size();
    mText += R"(","cam_id":")";
    // Deliberate: unsigned and empty without a camera; the parameter is signed and -1 then.
    if (!record.frameInfo.camIds.empty()) {
        mText += NumberText(record.frameInfo.camIds.front()).text();
    }
    mText += kEnd;
}

void NodeEvent::setNode(std::string_view node) {
    mText.replace(kBegin.size(), mNodeSize, node);
    mTimeBegin = mTimeBegin - mNodeSize + node.size();
    mNodeSize = node.size();
}

void NodeEvent::setTimeAndStage(double time, char stage) {
    const NumberText number(truncateSaturated<int64_t>(time));
    mText.replace(mTimeBegin, mTimeSize, number.text());
    mTimeSize = number.text().size();
    mText[mText.size() - kStageFromEnd] = stage;
}

// Sends the report on one record. The texts are concatenated as they are: names that hold
// quotes give a report that is no JSON, and the service is used to that.
class Report {
  public:
    // Keeps a reference: the record must outlive the report.
    explicit Report(const RecordCopy& record) : mRecord(record), mId(record.frameInfo.imageName) {
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

    const RecordCopy& mRecord;
    const std::string mId;
    std::string mEvent;  // the event being sent; one buffer for all
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

void Report::sendParams() {
    const auto& snapshot = mRecord.snapshotInfo;
    const auto& camIds = mRecord.frameInfo.camIds;
    sendParam("iso", snapshot.iso);
    sendParam("lux", snapshot.lux);
    sendParam("face_detect", snapshot.faceDetect);
    sendParam("cam_mode", snapshot.camMode);
    sendParam("cam_id", camIds.empty() ? -1 : static_cast<int32_t>(camIds.front()));
    sendParam("fstop", snapshot.fstop);
    sendParam("zoom_ratio", truncateSaturated<int32_t>(snapshot.zoomRatio));
    sendParam("exposure_time", snapshot.exposureTime);
}

// Moves `entry` on to `key`, in the order of keys. False if there is no such entry.
template <typename Iterator>
bool moveTo(std::string_view key, Iterator& entry, Iterator end) {
    for (; entry != end; ++entry) {
        const int order = key.compare(entry->first);
        if (order <= 0) {
            return order == 0;
        }
    }
    return false;
}

void Report::sendNodeEvents() {
    const AlgorithmCopy algo(mRecord.snapshotInfo.zuAlgoInfo);
    NodeEvent event(mEvent, mRecord);
    auto completion = algo.algoTimeC.begin();
    for (const auto& [node, startTime] : algo.algoTimeA) {
        event.setNode(node);
        event.setTimeAndStage(startTime, '0');
        INFOSYNC_LOGI(site::kStartEvent, "stime %s", mEvent.c_str());
        sendEvent();

        if (moveTo(node, completion, algo.algoTimeC.end())) {
            event.setTimeAndStage(completion->second, '2');
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
    const RecordCopy record(*static_cast<const RequestRecord*>(in));
    Report(record).send();
}

}  // namespace camInfosync
