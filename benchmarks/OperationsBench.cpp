// Each operation alone, on a record that is filled already.

#include <cstring>
#include <stdexcept>

#include "Bench.h"

namespace {

// A snapshot that all of the lifecycle's calls but the last two were made for.
template <typename Implementation>
class FilledSnapshot {
  public:
    FilledSnapshot() {
        for (size_t i = 0; i + 2 < shortNames().size(); ++i) {
            makeCall(Implementation::manager(), shortNames()[i]);
        }
    }
    ~FilledSnapshot() { makeCall(Implementation::manager(), shortNames().back()); }
    FilledSnapshot(const FilledSnapshot&) = delete;
    FilledSnapshot& operator=(const FilledSnapshot&) = delete;
};

// Repeats one call, with the four others in flight as always. `call` gets the manager and the
// image's name.
template <typename Function>
void registerOperation(const std::string& name, Function call) {
    registerForBoth("operation/" + name, [call](benchmark::State& state, auto which) {
        using Implementation = decltype(which);
        const std::string& image = imageOf(shortNames()[0]);
        const OthersInFlight<Implementation> others(image, kOthersInFlight);
        const FilledSnapshot<Implementation> snapshot;
        auto& manager = Implementation::manager();
        const CountedState counted(state);
        for (auto _ : state) {
            call(manager, image);
        }
    });
}

template <typename Type>
const Call& firstCall() {
    for (const Call& call : shortNames()) {
        if (std::holds_alternative<Type>(call)) {
            return call;
        }
    }
    throw std::logic_error("the lifecycle has no such call");
}

template <typename Type>
void registerCall(const std::string& name) {
    const Call& call = firstCall<Type>();
    registerOperation(name, [&call](auto& manager, const std::string& /*image*/) {
        makeCall(manager, call);
    });
}

bool isCollecting(Infosync::Manager& manager) {
    void* answer = nullptr;
    manager.request(camInfosync::INFO_SYNC_TYPE_CMD, "snapshotInfoCollectEnable", &answer);
    return std::strcmp(static_cast<const char*>(answer), "enabled") == 0;
}

bool isCollecting(const HandWritten& manager) {
    return manager.isCollecting();
}

// The forms that the lifecycle has no call of.
void registerWholeMaps() {
    registerOperation("updateVndResultInfo_map", [](auto& manager, const std::string& image) {
        static const std::map<int32_t, std::string> results = {{10, "error_none"},
                                                               {11, "error_none"}};
        manager.updateVndResultInfo(image, results);
    });
    registerOperation("updateSnapshotTimeInfo_map", [](auto& manager, const std::string& image) {
        static const std::map<std::string, int64_t> times = {{"7anchor_time", 12},
                                                             {"8getbuffer_from_fwk", 42}};
        manager.updateSnapshotTimeInfo(image, times);
    });
    registerOperation("updateNodeProcState_map", [](auto& manager, const std::string& image) {
        static const std::map<std::string, std::string> states = {{"node0", "OK"}, {"node1", "OK"}};
        manager.updateNodeProcState(image, states);
    });
    registerOperation("updatePostProcInfo", [](auto& manager, const std::string& /*image*/) {
        static const std::map<std::string, uint32_t> info = {{"width", 4000}, {"height", 3000}};
        manager.updatePostProcInfo(info);
    });
    registerOperation("updateZuAlgoInfo_whole", [](auto& manager, const std::string& image) {
        static const camInfosync::SnapshotInfo::ZuAlgoInfo info = {
                {"node0", "node1"}, {{"node0", 1.0}}, {{"node0", 2.0}}, {{"node0", 3.0}}, {}};
        manager.updateZuAlgoInfo(image, info);
    });
    registerOperation("updateSnapshotErrorInfo", [](auto& manager, const std::string& image) {
        manager.updateSnapshotErrorInfo(image, "focus lost");
    });
}

}  // namespace

void registerOperations() {
    registerOperation("register_and_unregister", [](auto& manager, const std::string& /*image*/) {
        static const std::string name = "IMG_3000000";
        manager.registerSnapshotRequestRecord(name);
        manager.unregisterSnapshotRequestRecord(name);
    });
    registerCall<calls::FrameInfo>("updateFrameInfo");
    registerCall<calls::RequestInfo>("updateRequestInfo");
    registerCall<calls::UIInfo>("updateUIInfo");
    registerCall<calls::Anchor3aInfo>("updateAnchor3aInfo");
    registerCall<calls::AnchorFrame>("updateAnchorFrame");
    registerCall<calls::VndResultInfo>("updateVndResultInfo");
    registerCall<calls::ZuAlgoInfo>("updateZuAlgoInfo");
    registerOperation("updateSnapshotTimeInfo", [](auto& manager, const std::string& image) {
        manager.updateSnapshotTimeInfo(image, 1U);
    });
    registerCall<calls::NodeProcTime>("updateNodeProcTime");
    registerCall<calls::NodeProcState>("updateNodeProcState");
    registerCall<calls::Flush>("snapshotRequestInfoFlush");
    registerWholeMaps();
    registerOperation("command", [](auto& manager, const std::string& /*image*/) {
        benchmark::DoNotOptimize(isCollecting(manager));
    });
}
