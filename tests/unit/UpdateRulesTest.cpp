// What each update writes, also where it builds on what the record holds.

#include "Doubles.h"
#include "Updates.h"

namespace camInfosync {
namespace {

// Notes the fields that differ.
void noteChanges(const std::string& name, const RequestRecord& before, const RequestRecord& after) {
    // clang-format off
#define NOTE(field) \
    if (after.field != before.field) doubles::note(name + ": " #field, after.field);
    NOTE(errorInfo) NOTE(hasError) NOTE(requestTime.tv_sec) NOTE(requestTime.tv_nsec)
    NOTE(reserved64) NOTE(createTime.tv_sec) NOTE(createTime.tv_nsec)
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
            SnapshotInfo& info = queue.records[key]->snapshotInfo;
            info.vendorResultInfo = {{99, "old"}};
            info.zuAlgoInfo = {{key}, {{"old", 9}}, {{"old", 9}}, {{"old", 9}}, {{"old", "OK"}}};
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

    InfoSynchronizerManager manager;
    RequestRecordQueue& queue = *manager.mRequestRecordQueue;
    std::map<std::string, RequestRecord> before;
};

TEST_F(RecordUpdate, WritesItsFieldsToTheOneRecordFound) {
    for (const Update& update : updates) {
        doubles::note("== " + std::string(update.text));
        update.run(manager, "NONE%s");
        doubles::note("--");
        update.run(manager, "IMG");
        noteAll();
    }
    doubles::note("postProcInfo", queue.postProcInfo);
}

TEST_F(RecordUpdate, PassesTheMutexOnceBeforeHoldingIt) {
    std::map<int, int> totals;
    const auto kept = queue.records;
    for (const Update& update : updates) {
        const int locks = doubles::locksOf(
                &queue.mutex, [&] { update.run(manager, "IMG"); },
                [&] {
                    queue.records.clear();
                    queue.postProcInfo.clear();
                });
        totals[locks] += 1;
        queue.records = kept;
    }
    doubles::takeJournal();
    noteAll();  // nothing: the records were gone before an update had the mutex
    EXPECT_EQ(queue.postProcInfo.size(), 1U);
    // The five that are refused for their arguments take none.
    EXPECT_EQ(totals, (std::map<int, int>{{0, 5}, {2, 28}}));
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
    SnapshotInfo& info = queue.records["IMG"]->snapshotInfo;
    for (const auto& [expected, results] : cases) {
        info.requestInfo.expectedResultIds = expected;
        info.vendorResultInfo = results;
        doubles::note("expected " + testing::PrintToString(expected) + ", before", results);
        manager.updateVndResultInfo("IMG", 11U, 0);
        doubles::note("after", info.vendorResultInfo);
    }
}

}  // namespace
}  // namespace camInfosync
