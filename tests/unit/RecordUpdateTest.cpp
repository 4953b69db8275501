// What the record operations write, and what they leave alone.

#include <cmath>

#include "Doubles.h"
#include "InfoSynchronizerManager.h"

namespace camInfosync {
namespace {

using Manager = InfoSynchronizerManager;
constexpr RequestType kOtherType = static_cast<RequestType>(6);

// Notes the fields that differ.
void noteChanges(const std::string& name, const RequestRecord& before, const RequestRecord& after) {
    // clang-format off
#define NOTE(field) \
    if (after.field != before.field) doubles::note(name + ": " #field, after.field);
    NOTE(errorInfo) NOTE(hasError) NOTE(requestTime.tv_sec) NOTE(reserved64)
    NOTE(frameInfo.frameNumber) NOTE(frameInfo.timestamp) NOTE(frameInfo.camIds)
    NOTE(frameInfo.frameExtra) NOTE(frameInfo.imageName)
    NOTE(snapshotInfo.requestType) NOTE(snapshotInfo.camMode) NOTE(snapshotInfo.faceDetect)
    NOTE(snapshotInfo.zoomRatio) NOTE(snapshotInfo.uiExtra) NOTE(snapshotInfo.vendorResultInfo)
    NOTE(snapshotInfo.requestInfo.reqValueA) NOTE(snapshotInfo.requestInfo.reqValueB)
    NOTE(snapshotInfo.requestInfo.anchorFrame) NOTE(snapshotInfo.requestInfo.reqFlag)
    NOTE(snapshotInfo.requestInfo.reqValue64) NOTE(snapshotInfo.requestInfo.reqIdsA)
    NOTE(snapshotInfo.requestInfo.expectedResultIds) NOTE(snapshotInfo.zuAlgoInfo.algoList)
    NOTE(snapshotInfo.zuAlgoInfo.algoTimeA) NOTE(snapshotInfo.zuAlgoInfo.algoTimeB)
    NOTE(snapshotInfo.zuAlgoInfo.algoTimeC) NOTE(snapshotInfo.zuAlgoInfo.algoState)
    NOTE(snapshotInfo.fstop) NOTE(snapshotInfo.iso) NOTE(snapshotInfo.lux)
    NOTE(snapshotInfo.exposureTime) NOTE(snapshotInfo.timeInfo)
    // clang-format on
}

struct Update {
    const char* text;
    std::function<void(Manager& manager, const char* image)> run;
};
// clang-format off
#define UPDATE(...) \
    {#__VA_ARGS__, [](Manager& manager, [[maybe_unused]] const char* image) { manager.__VA_ARGS__; }}
// clang-format on

// Each is run for an image that is not there and for one that is.
const Update updates[] = {
        UPDATE(updateFrameInfo(image, 7, "123", {2, 1}, 9)),
        UPDATE(updateRequestInfo(image, -1, 2, true, UINT64_MAX, {3, 4}, {5})),
        UPDATE(updateUIInfo(image, kOtherType, 4000000000U, -2, 2.5F, "ui")),
        UPDATE(updateAnchor3aInfo(image, 1.75F, 4, -0.5F, INT64_MIN)),
        UPDATE(updateAnchorFrame(image, -3)),
        UPDATE(updateVndResultInfo(image, UINT32_MAX, 0)),
        UPDATE(updateVndResultInfo(image, 1, 1)),
        UPDATE(updateVndResultInfo(image, 1, 2)),
        UPDATE(updateVndResultInfo(image, 1, 3)),
        UPDATE(updateVndResultInfo(image, 1, 4)),
        UPDATE(updateVndResultInfo(image, 1, 5)),
        UPDATE(updateVndResultInfo(image, 1, -1)),
        UPDATE(updateVndResultInfo(image, {{1, "error_device"}})),
        UPDATE(updateZuAlgoInfo(image, std::vector<std::string>{"x:1:2", "y", ":z", "y:3"})),
        UPDATE(updateZuAlgoInfo(image, {{"n"}, {{"a", 1}}, {{"b", 2}}, {{"c", 3}}, {{"d", "OK"}}})),
        UPDATE(updateSnapshotErrorInfo(image, "lost")),
        UPDATE(updateSnapshotErrorInfo(image, nullptr)),
        UPDATE(updateNodeProcTime(image, "n", 10.5, 3.25, 13.75)),
        UPDATE(updateNodeProcTime(image, "n", 10.5, -1.0, 13.75)),
        UPDATE(updateNodeProcTime(image, "n", 10.5, -0.999999, 13.75)),
        UPDATE(updateNodeProcTime(image, "n", 10.5, std::nan(""), 13.75)),
        UPDATE(updateNodeProcState(image, "n", 0)),
        UPDATE(updateNodeProcState(image, "n", 1)),
        UPDATE(updateNodeProcState(image, "n", 2)),
        UPDATE(updateNodeProcState(image, "n", 3)),
        UPDATE(updateNodeProcState(image, "n", 4)),
        UPDATE(updateNodeProcState(image, "n", 5)),
        UPDATE(updateNodeProcState(image, "n", INT32_MIN)),
        UPDATE(updateNodeProcState(image, {{"n", "NodeProcessError"}, {"o", "any"}})),
        UPDATE(updateSnapshotTimeInfo(image, {{"2request_to_vendor", 5}, {"no stage", 6}})),
        UPDATE(updateSnapshotTimeInfo(image, 0)),
        UPDATE(updatePostProcInfo({{"a", 4000000000U}})),
};

// Works on a manager of its own. Keys and frame names cross, so that an operation which looks
// under the wrong one is seen.
class RecordUpdate : public doubles::Test {
  protected:
    RecordUpdate() {
        doubles::takeJournal();
        doubles::stopClock(7, 0);
        for (const char* key : {"A", "B", "IMG"}) {
            queue.emplace_back(key);
            queue.records[key]->frameInfo.imageName = key == std::string("IMG") ? "" : "IMG";
            queue.records[key]->snapshotInfo.zuAlgoInfo.algoList = {"old"};
            before.emplace(key, *queue.records[key]);
        }
    }
    // Notes what has changed, and takes it back.
    void noteAll() {
        for (const auto& [key, record] : queue.records) {
            noteChanges(key, before.at(key), *record);
            *record = before.at(key);
        }
        doubles::note("failed", queue.errorImageNames);
        queue.errorImageNames.clear();
    }

    Manager manager;
    RequestRecordQueue& queue = *manager.mRequestRecordQueue;
    std::map<std::string, RequestRecord> before;
};

TEST_F(RecordUpdate, WritesItsFieldsToTheOneRecordFound) {
    for (const Update& update : updates) {
        doubles::note("== " + std::string(update.text));
        update.run(manager, "NONE");
        doubles::note("--");
        update.run(manager, "IMG");
        noteAll();
    }
    doubles::note("postProcInfo", queue.postProcInfo);
}

TEST_F(RecordUpdate, PassesTheMutexOnceBeforeHoldingIt) {
    std::map<int, int> totals;
    for (const Update& update : updates) {
        const int locks = doubles::locksOf(queue.mutex, [&] { update.run(manager, "NONE"); });
        totals[locks] += 1;
    }
    doubles::takeJournal();
    // The five that are refused for their arguments take none.
    EXPECT_EQ(totals, (std::map<int, int>{{0, 5}, {2, 27}}));
}

TEST_F(RecordUpdate, RepeatedUpdatesAppendOrReplace) {
    manager.updateFrameInfo("IMG", 1, "first", {1}, 2);
    manager.updateFrameInfo("IMG", 3, "second", {2, 3}, 4);
    manager.updateRequestInfo("IMG", 1, 1, true, 1, {1}, {1});
    manager.updateAnchorFrame("IMG", 8);
    manager.updateRequestInfo("IMG", 2, 2, false, 2, {}, {2});
    for (int round = 0; round < 2; ++round) {
        manager.updateSnapshotErrorInfo("IMG", "lost");
        manager.updateVndResultInfo("IMG", 9, 1);
        manager.updateNodeProcTime("IMG", "n", round, -1.0, round);
        manager.updateNodeProcState("IMG", "n", 4);
    }
    manager.updateZuAlgoInfo("IMG", std::vector<std::string>{"n:more", "new"});
    noteAll();
    manager.updateZuAlgoInfo("IMG", std::vector<std::string>{});
    manager.updatePostProcInfo({{"a", 1}, {"b", 2}});
    manager.updatePostProcInfo({{"b", 3}});
    noteAll();
    doubles::note("postProcInfo", queue.postProcInfo);
}

TEST_F(RecordUpdate, VendorResultOverwritesEarlierOnesUntilAllAreSeen) {
    const std::pair<std::vector<int32_t>, SnapshotInfo::VendorResultInfo> cases[] = {
            {{10, 11, 12}, {}},
            {{10, 11}, {{10, "seen"}}},
            {{10, 11}, {{10, "seen"}, {11, "seen"}}},
            {{10, 10}, {{10, "seen"}}},              // repeated ids count each time
            {{10, 11}, {{1, "seen"}, {2, "seen"}}},  // so do results that nobody expected
            {{}, {}},
    };
    for (const auto& [expected, results] : cases) {
        SnapshotInfo& info = queue.records.at("IMG")->snapshotInfo;
        info.requestInfo.expectedResultIds = expected;
        info.vendorResultInfo = results;
        doubles::note("expected " + testing::PrintToString(expected) + ", before", results);
        manager.updateVndResultInfo("IMG", 11U, 0);
        doubles::note("after", info.vendorResultInfo);
    }
}

}  // namespace
}  // namespace camInfosync
