#include "Calls.h"

#include <fstream>
#include <map>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace calls {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Register, image)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FrameInfo, image, frameNumber, timestamp, camIds, frameExtra)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RequestInfo, image, reqValueA, reqValueB, reqFlag, reqValue64,
                                   reqIdsA, expectedResultIds)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(UIInfo, image, requestType, camMode, faceDetect, zoomRatio,
                                   uiExtra)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Anchor3aInfo, image, fstop, iso, lux, exposureTime)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(AnchorFrame, image, anchorFrame)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(VndResultInfo, image, resultId, errorCode)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ZuAlgoInfo, image, algoList)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(TimeStage, image, stage)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(NodeProcTime, image, node, first, second, third)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(NodeProcState, image, node, state)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Flush, image, type)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Unregister, image)

}  // namespace calls

namespace {

template <typename Type>
Call parse(const nlohmann::json& line) {
    return line.get<Type>();
}

Call parseCall(const nlohmann::json& line) {
    static const std::map<std::string, Call (*)(const nlohmann::json&)> parsers = {
            {"registerSnapshotRequestRecord", parse<calls::Register>},
            {"updateFrameInfo", parse<calls::FrameInfo>},
            {"updateRequestInfo", parse<calls::RequestInfo>},
            {"updateUIInfo", parse<calls::UIInfo>},
            {"updateAnchor3aInfo", parse<calls::Anchor3aInfo>},
            {"updateAnchorFrame", parse<calls::AnchorFrame>},
            {"updateVndResultInfo", parse<calls::VndResultInfo>},
            {"updateZuAlgoInfo", parse<calls::ZuAlgoInfo>},
            {"updateSnapshotTimeInfo", parse<calls::TimeStage>},
            {"updateNodeProcTime", parse<calls::NodeProcTime>},
            {"updateNodeProcState", parse<calls::NodeProcState>},
            {"snapshotRequestInfoFlush", parse<calls::Flush>},
            {"unregisterSnapshotRequestRecord", parse<calls::Unregister>},
    };
    return parsers.at(line.at("call").get<std::string>())(line);
}

}  // namespace

std::vector<Call> readCalls(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    std::vector<Call> calls;
    for (std::string line; std::getline(file, line);) {
        calls.push_back(parseCall(nlohmann::json::parse(line)));
    }
    return calls;
}

const std::vector<Call>& shortNames() {
    static const std::vector<Call> calls = readCalls(INFOSYNC_BENCH_DATA "/lifecycle.jsonl");
    return calls;
}

const std::vector<Call>& longNames() {
    static const std::vector<Call> calls =
            readCalls(INFOSYNC_BENCH_DATA "/lifecycle-long-names.jsonl");
    return calls;
}

const std::string& imageOf(const Call& call) {
    return std::visit([](const auto& made) -> const std::string& { return made.image; }, call);
}

std::vector<Call> withImage(std::vector<Call> calls, const std::string& image) {
    for (Call& call : calls) {
        std::visit([&image](auto& made) { made.image = image; }, call);
    }
    return calls;
}
