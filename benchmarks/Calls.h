// The calls that a snapshot's life consists of, read from a file of JSON lines and ready to be
// made on anything that has the manager's operations.

#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "InfoSyncType.h"
#include "RequestRecord.h"

// One structure per operation. The members bear the names that they have in the file.
namespace calls {

struct Register {
    std::string image;
};
struct FrameInfo {
    std::string image;
    uint32_t frameNumber;
    std::string timestamp;
    std::vector<uint32_t> camIds;
    uint32_t frameExtra;
};
struct RequestInfo {
    std::string image;
    int32_t reqValueA;
    int32_t reqValueB;
    bool reqFlag;
    uint64_t reqValue64;
    std::vector<int32_t> reqIdsA;
    std::vector<int32_t> expectedResultIds;
};
struct UIInfo {
    std::string image;
    int32_t requestType;
    uint32_t camMode;
    int32_t faceDetect;
    float zoomRatio;
    std::string uiExtra;
};
struct Anchor3aInfo {
    std::string image;
    float fstop;
    int32_t iso;
    float lux;
    int64_t exposureTime;
};
struct AnchorFrame {
    std::string image;
    int32_t anchorFrame;
};
struct VndResultInfo {
    std::string image;
    uint32_t resultId;
    int32_t errorCode;
};
struct ZuAlgoInfo {
    std::string image;
    std::vector<std::string> algoList;
};
struct TimeStage {
    std::string image;
    uint32_t stage;
};
struct NodeProcTime {
    std::string image;
    std::string node;
    double first;
    double second;
    double third;
};
struct NodeProcState {
    std::string image;
    std::string node;
    int32_t state;
};
struct Flush {
    std::string image;
    int32_t type;
};
struct Unregister {
    std::string image;
};

// Each argument is an lvalue: what an operation takes by value is copied by its caller, as the
// pipeline copies it.
template <typename Manager>
struct Make {
    Manager& manager;

    void operator()(const Register& call) const {
        manager.registerSnapshotRequestRecord(call.image);
    }
    void operator()(const FrameInfo& call) const {
        manager.updateFrameInfo(call.image, call.frameNumber, call.timestamp, call.camIds,
                                call.frameExtra);
    }
    void operator()(const RequestInfo& call) const {
        manager.updateRequestInfo(call.image, call.reqValueA, call.reqValueB, call.reqFlag,
                                  call.reqValue64, call.reqIdsA, call.expectedResultIds);
    }
    void operator()(const UIInfo& call) const {
        manager.updateUIInfo(call.image, static_cast<camInfosync::RequestType>(call.requestType),
                             call.camMode, call.faceDetect, call.zoomRatio, call.uiExtra);
    }
    void operator()(const Anchor3aInfo& call) const {
        manager.updateAnchor3aInfo(call.image, call.fstop, call.iso, call.lux, call.exposureTime);
    }
    void operator()(const AnchorFrame& call) const {
        manager.updateAnchorFrame(call.image, call.anchorFrame);
    }
    void operator()(const VndResultInfo& call) const {
        manager.updateVndResultInfo(call.image, call.resultId, call.errorCode);
    }
    void operator()(const ZuAlgoInfo& call) const {
        manager.updateZuAlgoInfo(call.image, call.algoList);
    }
    void operator()(const TimeStage& call) const {
        manager.updateSnapshotTimeInfo(call.image, call.stage);
    }
    void operator()(const NodeProcTime& call) const {
        manager.updateNodeProcTime(call.image, call.node, call.first, call.second, call.third);
    }
    void operator()(const NodeProcState& call) const {
        manager.updateNodeProcState(call.image, call.node, call.state);
    }
    void operator()(const Flush& call) const {
        manager.snapshotRequestInfoFlush(call.image,
                                         static_cast<camInfosync::InfoSyncType>(call.type));
    }
    void operator()(const Unregister& call) const {
        manager.unregisterSnapshotRequestRecord(call.image);
    }
};

}  // namespace calls

using Call = std::variant<calls::Register, calls::FrameInfo, calls::RequestInfo, calls::UIInfo,
                          calls::Anchor3aInfo, calls::AnchorFrame, calls::VndResultInfo,
                          calls::ZuAlgoInfo, calls::TimeStage, calls::NodeProcTime,
                          calls::NodeProcState, calls::Flush, calls::Unregister>;

// Throws on a file that cannot be read, a line that is no JSON, an unknown call and a missing
// argument.
std::vector<Call> readCalls(const std::string& path);

// The two lives that the figures are about: with names that fit into a small string, and with
// longer ones.
const std::vector<Call>& shortNames();
const std::vector<Call>& longNames();

const std::string& imageOf(const Call& call);

// The same calls for another image.
std::vector<Call> withImage(std::vector<Call> calls, const std::string& image);

template <typename Manager>
void makeCall(Manager& manager, const Call& call) {
    std::visit(calls::Make<Manager>{manager}, call);
}

template <typename Manager>
void makeCalls(Manager& manager, const std::vector<Call>& calls) {
    for (const Call& call : calls) {
        makeCall(manager, call);
    }
}
