// The operations that the recorder puts in front of the library's. Each notes its call, unless
// recording is off, and makes it.

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Call.h"
#include "InfoSynchronizerManager.h"
#include "Line.h"
#include "Lines.h"
#include "RealLibrary.h"
#include "Recorder.h"
#include "Recording.h"

namespace recording {
namespace {

using camInfosync::InfoSynchronizerManager;
using camInfosync::InfoSyncType;
using camInfosync::RequestRecord;
using camInfosync::RequestType;
using camInfosync::SnapshotInfo;
using Manager = InfoSynchronizerManager;
using Kind = Call::Kind;

// An odd address, which a function has that is no member, is a virtual function's in a pointer to
// a member.
#define INFOSYNC_EVEN __attribute__((aligned(4)))

// An operation that the recorder and the library define under one name.
template <typename Function>
class Real {
  public:
    explicit constexpr Real(Function own) : mOwn(own) {}

    // Without the library's definition, or without a library, `nothing` is called instead. Returns
    // whether there is a definition.
    bool find(void* nothing, bool isLibrary = true) {
        void* const real = isLibrary ? findReal(addressOf(mOwn)) : nullptr;
        mFunction = functionAt<Function>(real != nullptr ? real : nothing);
        return real != nullptr;
    }
    Function function() const { return mFunction; }

  private:
    const Function mOwn;
    Function mFunction = nullptr;
};

const std::string* imageOf(const std::string& first) {
    return &first;
}
template <typename First>
const std::string* imageOf(const First& /*first*/) {
    return nullptr;
}

// An operation of the manager, with one of its argument lists. `names` are the fields of the
// capture log that its arguments are written to.
template <typename First, typename... Others>
class Operation {
  public:
    using Function = void (Manager::*)(First, Others...);

    constexpr Operation(Function own, Kind kind, std::string_view name,
                        const FieldNames<1 + sizeof...(Others)>& names)
        : mReal(own), mKind(kind), mName(name), mNames(names) {}

    void find(bool isLibrary) { mReal.find(addressOf(&doNothing), isLibrary); }

    // Moves the arguments to the library.
    void call(Manager& manager, First& first, Others&... others) {
        if (isOff()) {
            return (manager.*mReal.function())(std::move(first), std::move(others)...);
        }
        RecordedFrame frame;
        if (isRecording()) {
            const auto write = [&](Line& line) { writeArguments(line, mNames, first, others...); };
            noteCall(frame, &manager, {mName, mKind, imageOf(first)}, std::cref(write));
        }
        (manager.*mReal.function())(std::move(first), std::move(others)...);
    }

  private:
    INFOSYNC_EVEN static void doNothing(Manager* /*manager*/, First /*first*/,
                                        Others... /*others*/) {}

    Real<Function> mReal;
    const Kind mKind;
    const std::string_view mName;
    const FieldNames<1 + sizeof...(Others)> mNames;
};

using Text = std::string;

RECORDING_CONSTINIT Operation<Text> registerRecord{&Manager::registerSnapshotRequestRecord,
                                                   Kind::kRegister,
                                                   "registerSnapshotRequestRecord",
                                                   {"image"}};
RECORDING_CONSTINIT Operation<Text> unregisterRecord{&Manager::unregisterSnapshotRequestRecord,
                                                     Kind::kUnregister,
                                                     "unregisterSnapshotRequestRecord",
                                                     {"image"}};
RECORDING_CONSTINIT Operation<Text, InfoSyncType> flush{&Manager::snapshotRequestInfoFlush,
                                                        Kind::kFlush,
                                                        "snapshotRequestInfoFlush",
                                                        {"image", "type"}};
RECORDING_CONSTINIT Operation<Text, uint32_t, Text, std::vector<uint32_t>, uint32_t> frameInfo{
        &Manager::updateFrameInfo,
        Kind::kUpdate,
        "updateFrameInfo",
        {"image", "frameNumber", "timestamp", "camIds", "frameExtra"}};
RECORDING_CONSTINIT Operation<Text, int32_t, int32_t, bool, uint64_t, std::vector<int32_t>,
                              std::vector<int32_t>>
        requestInfo{&Manager::updateRequestInfo,
                    Kind::kUpdate,
                    "updateRequestInfo",
                    {"image", "reqValueA", "reqValueB", "reqFlag", "reqValue64", "reqIdsA",
                     "expectedResultIds"}};
RECORDING_CONSTINIT Operation<Text, RequestType, uint32_t, int32_t, float, Text> uiInfo{
        &Manager::updateUIInfo,
        Kind::kUpdate,
        "updateUIInfo",
        {"image", "requestType", "camMode", "faceDetect", "zoomRatio", "uiExtra"}};
RECORDING_CONSTINIT Operation<Text, float, int32_t, float, int64_t> anchor3aInfo{
        &Manager::updateAnchor3aInfo,
        Kind::kUpdate,
        "updateAnchor3aInfo",
        {"image", "fstop", "iso", "lux", "exposureTime"}};
RECORDING_CONSTINIT Operation<Text, int32_t> anchorFrame{
        &Manager::updateAnchorFrame, Kind::kUpdate, "updateAnchorFrame", {"image", "anchorFrame"}};
RECORDING_CONSTINIT Operation<Text, uint32_t, int32_t> vendorResult{
        &Manager::updateVndResultInfo,
        Kind::kUpdate,
        "updateVndResultInfo",
        {"image", "resultId", "errorCode"}};
RECORDING_CONSTINIT Operation<Text, SnapshotInfo::VendorResultInfo> vendorResults{
        &Manager::updateVndResultInfo,
        Kind::kUpdate,
        "updateVndResultInfo",
        {"image", "vendorResultInfo"}};
RECORDING_CONSTINIT Operation<Text, std::vector<Text>> algoList{
        &Manager::updateZuAlgoInfo, Kind::kUpdate, "updateZuAlgoInfo", {"image", "algoList"}};
RECORDING_CONSTINIT Operation<Text, SnapshotInfo::ZuAlgoInfo> algoInfo{
        &Manager::updateZuAlgoInfo, Kind::kUpdate, "updateZuAlgoInfo", {"image", "zuAlgoInfo"}};
RECORDING_CONSTINIT Operation<Text, const char*> errorInfo{&Manager::updateSnapshotErrorInfo,
                                                           Kind::kUpdate,
                                                           "updateSnapshotErrorInfo",
                                                           {"image", "text"}};
RECORDING_CONSTINIT Operation<std::map<Text, uint32_t>> postProcInfo{
        &Manager::updatePostProcInfo, Kind::kUpdate, "updatePostProcInfo", {"postProcInfo"}};
RECORDING_CONSTINIT Operation<Text, uint32_t> timeStage{&Manager::updateSnapshotTimeInfo,
                                                        Kind::kUpdate,
                                                        "updateSnapshotTimeInfo",
                                                        {"image", "stage"}};
RECORDING_CONSTINIT Operation<Text, std::map<Text, int64_t>> timeInfo{
        &Manager::updateSnapshotTimeInfo,
        Kind::kUpdate,
        "updateSnapshotTimeInfo",
        {"image", "timeInfo"}};
RECORDING_CONSTINIT Operation<Text, Text, double, double, double> nodeTimes{
        &Manager::updateNodeProcTime,
        Kind::kUpdate,
        "updateNodeProcTime",
        {"image", "node", "first", "second", "third"}};
RECORDING_CONSTINIT Operation<Text, Text, int32_t> nodeState{&Manager::updateNodeProcState,
                                                             Kind::kUpdate,
                                                             "updateNodeProcState",
                                                             {"image", "node", "state"}};
RECORDING_CONSTINIT Operation<Text, std::map<Text, Text>> nodeStates{
        &Manager::updateNodeProcState, Kind::kUpdate, "updateNodeProcState", {"image", "states"}};

RECORDING_CONSTINIT Real<void (Manager::*)(InfoSyncType, const void*, void**)> request{
        &Manager::request};
RECORDING_CONSTINIT Real<Manager& (*)()> getInstanceOfRecords{&Manager::getInstance};
RECORDING_CONSTINIT Real<void* (*)()> getInstanceOfC{&GetInstance};

INFOSYNC_EVEN void ignoreRequest(Manager* /*manager*/, InfoSyncType /*type*/, const void* /*in*/,
                                 void** /*out*/) {}
void* noManager() {
    return nullptr;
}
// Something to refer to. None of the operations that do nothing looks at it.
Manager& emptyManager() {
    alignas(Manager) static char memory[sizeof(Manager)];
    return *reinterpret_cast<Manager*>(memory);
}

// What `in` and `out` hold is known of the types that the library knows.
void writeRequest(Line& line, InfoSyncType type, const void* in, void* const* out) {
    line.field("type", type);
    if (type == camInfosync::INFO_SYNC_TYPE_CMD) {
        line.field("key", static_cast<const char*>(in));
        if (out == nullptr) {
            line.field("out", nullptr);
        }
    } else if (type == camInfosync::INFO_SYNC_TYPE_COLLECT ||
               type == camInfosync::INFO_SYNC_TYPE_COLLECT_ALT) {
        if (in != nullptr) {
            line.field("record", *static_cast<const RequestRecord*>(in));
        } else {
            line.field("record", nullptr);
        }
    }
}

// Remembers which manager an accessor returns. Always the same one, so that it is seldom written.
template <typename Pointer>
Pointer remember(std::atomic<const void*>& place, Pointer manager) {
    if (place.load(std::memory_order_relaxed) != manager) {
        place.store(manager, std::memory_order_relaxed);
    }
    return manager;
}

}  // namespace

void findOperations() {
    // Without a manager no operation may be called, and one line says so.
    const bool isLibrary = getInstanceOfRecords.find(addressOf(&emptyManager));
    const auto find = [&](auto&... operations) { (operations.find(isLibrary), ...); };
    find(registerRecord, unregisterRecord, flush, frameInfo, requestInfo, uiInfo, anchor3aInfo,
         anchorFrame, vendorResult, vendorResults, algoList, algoInfo, errorInfo, postProcInfo,
         timeStage, timeInfo, nodeTimes, nodeState, nodeStates);
    request.find(addressOf(&ignoreRequest), isLibrary);
    getInstanceOfC.find(addressOf(&noManager), isLibrary);
}

}  // namespace recording

void* GetInstance() {
    if (recording::isOff()) {
        return recording::getInstanceOfC.function()();
    }
    recording::isRecording();
    return recording::remember(recording::gOtherManager, recording::getInstanceOfC.function()());
}

namespace camInfosync {

using Manager = InfoSynchronizerManager;

Manager& Manager::getInstance() {
    if (recording::isOff()) {
        return recording::getInstanceOfRecords.function()();
    }
    recording::isRecording();
    return *recording::remember(recording::gManager, &recording::getInstanceOfRecords.function()());
}

void Manager::request(InfoSyncType type, const void* in, void** out) {
    if (recording::isOff()) {
        return (this->*recording::request.function())(type, in, out);
    }
    recording::RecordedFrame frame;
    if (recording::isRecording()) {
        const auto write = [&](recording::Line& line) {
            recording::writeRequest(line, type, in, out);
        };
        const bool asks = type == INFO_SYNC_TYPE_CMD && in != nullptr && out != nullptr;
        recording::noteCall(
                frame, this,
                {"request",
                 asks ? recording::Call::Kind::kCommand : recording::Call::Kind::kRequest, nullptr},
                std::cref(write));
    }
    (this->*recording::request.function())(type, in, out);
}

void Manager::registerSnapshotRequestRecord(std::string imageName) {
    recording::registerRecord.call(*this, imageName);
}

void Manager::unregisterSnapshotRequestRecord(std::string imageName) {
    recording::unregisterRecord.call(*this, imageName);
}

void Manager::snapshotRequestInfoFlush(std::string imageName, InfoSyncType type) {
    recording::flush.call(*this, imageName, type);
}

void Manager::updateFrameInfo(std::string imageName, uint32_t frameNumber, std::string timestamp,
                              std::vector<uint32_t> camIds, uint32_t frameExtra) {
    recording::frameInfo.call(*this, imageName, frameNumber, timestamp, camIds, frameExtra);
}

void Manager::updateRequestInfo(std::string imageName, int32_t reqValueA, int32_t reqValueB,
                                bool reqFlag, uint64_t reqValue64, std::vector<int32_t> reqIdsA,
                                std::vector<int32_t> expectedResultIds) {
    recording::requestInfo.call(*this, imageName, reqValueA, reqValueB, reqFlag, reqValue64,
                                reqIdsA, expectedResultIds);
}

void Manager::updateUIInfo(std::string imageName, RequestType requestType, uint32_t camMode,
                           int32_t faceDetect, float zoomRatio, std::string uiExtra) {
    recording::uiInfo.call(*this, imageName, requestType, camMode, faceDetect, zoomRatio, uiExtra);
}

void Manager::updateAnchor3aInfo(std::string imageName, float fstop, int32_t iso, float lux,
                                 int64_t exposureTime) {
    recording::anchor3aInfo.call(*this, imageName, fstop, iso, lux, exposureTime);
}

void Manager::updateAnchorFrame(std::string imageName, int32_t anchorFrame) {
    recording::anchorFrame.call(*this, imageName, anchorFrame);
}

void Manager::updateVndResultInfo(std::string imageName, uint32_t resultId, int32_t errorCode) {
    recording::vendorResult.call(*this, imageName, resultId, errorCode);
}

void Manager::updateVndResultInfo(std::string imageName, SnapshotInfo::VendorResultInfo info) {
    recording::vendorResults.call(*this, imageName, info);
}

void Manager::updateZuAlgoInfo(std::string imageName, std::vector<std::string> algoList) {
    recording::algoList.call(*this, imageName, algoList);
}

void Manager::updateZuAlgoInfo(std::string imageName, SnapshotInfo::ZuAlgoInfo info) {
    recording::algoInfo.call(*this, imageName, info);
}

void Manager::updateSnapshotErrorInfo(std::string imageName, const char* text) {
    recording::errorInfo.call(*this, imageName, text);
}

void Manager::updatePostProcInfo(std::map<std::string, uint32_t> info) {
    recording::postProcInfo.call(*this, info);
}

void Manager::updateSnapshotTimeInfo(std::string imageName, uint32_t stage) {
    recording::timeStage.call(*this, imageName, stage);
}

void Manager::updateSnapshotTimeInfo(std::string imageName,
                                     std::map<std::string, int64_t> timeInfo) {
    recording::timeInfo.call(*this, imageName, timeInfo);
}

void Manager::updateNodeProcTime(std::string imageName, std::string nodeName, double first,
                                 double second, double third) {
    recording::nodeTimes.call(*this, imageName, nodeName, first, second, third);
}

void Manager::updateNodeProcState(std::string imageName, std::string nodeName, int32_t state) {
    recording::nodeState.call(*this, imageName, nodeName, state);
}

void Manager::updateNodeProcState(std::string imageName,
                                  std::map<std::string, std::string> states) {
    recording::nodeStates.call(*this, imageName, states);
}

}  // namespace camInfosync
