// The manager: the two of them, dispatch, the flush, the gates of the logs, and what each update
// writes. See also fresh_process_test.py.

#include <sys/resource.h>

#include <chrono>
#include <cmath>
#include <future>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include <zudebug/Log.h>

#include "Doubles.h"
#include "InfoSynchronizerManager.h"

namespace camInfosync {
namespace {

constexpr char kCommand[] = "snapshotInfoCollectEnable";

class Manager : public doubles::Test {
  protected:
    Manager() {
        queue.records.clear();
        doubles::takeJournal();
    }
    ~Manager() override { InfoSynchronizer::mIntentAwareImpl = doubles::service(); }

    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    RequestRecordQueue& queue = *manager.mRequestRecordQueue;
    RequestRecord record{REQUEST_TYPE_DEFAULT};
};

TEST_F(Manager, BuildsOneSynchronizerPerTypeAndOneThread) {
    std::promise<int> nice;
    InfoSynchronizerManager built;
    auto& synchronizers = built.mSynchronizers;
    EXPECT_EQ(synchronizers.size(), 3U);
    EXPECT_NE(synchronizers[INFO_SYNC_TYPE_COLLECT], synchronizers[INFO_SYNC_TYPE_COLLECT_ALT]);
    synchronizers[INFO_SYNC_TYPE_CMD]->requestInfo(&record);
    EXPECT_EQ(synchronizers[INFO_SYNC_TYPE_COLLECT]->requestCmd(kCommand), nullptr);
    built.mThreadPool->enqueue([&nice] { nice.set_value(getpriority(PRIO_PROCESS, 0)); });
    EXPECT_EQ(nice.get_future().get(), 10);
    doubles::note("without a service:");
    InfoSynchronizer::mIntentAwareImpl = nullptr;
    doubles::threadsLeft = 1;
    const InfoSynchronizerManager silent;
    doubles::note("without a thread:");
    EXPECT_THROW(InfoSynchronizerManager(), std::system_error);
}

TEST_F(Manager, TasksLeftAtItsEndFindNoQueueAndNoSynchronizer) {
    bool gone = false;
    {
        InfoSynchronizerManager built;
        built.mThreadPool->enqueue(
                [&gone, queue = std::weak_ptr(built.mRequestRecordQueue),
                 executor = std::weak_ptr(built.mSynchronizers.at(INFO_SYNC_TYPE_CMD))] {
                    for (int i = 0; i < 10000 && !gone; ++i) {
                        std::this_thread::sleep_for(std::chrono::milliseconds(1));
                        gone = queue.expired() && executor.expired();
                    }
                });
    }
    EXPECT_TRUE(gone);
    doubles::takeJournal();
}

// Tells that it was asked.
class Noting final : public InfoSynchronizer {
    void requestInfo(const void* /*in*/) override { doubles::note("the second collector"); }
};

TEST_F(Manager, RequestsGoToTheTypesSynchronizer) {
    void* const before = &manager;
    const auto second = std::make_shared<Noting>();
    doubles::takeJournal();
    const auto collector =
            std::exchange(manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT_ALT], second);
    void* out = before;
    for (const int type : {-1, 3, 5, 0, 2}) {
        doubles::note("type", type);
        manager.request(static_cast<InfoSyncType>(type), &record, &out);
    }
    EXPECT_EQ(manager.mSynchronizers.size(), 3U);
    manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT_ALT] = collector;
    doubles::note("null arguments:");
    manager.request(INFO_SYNC_TYPE_CMD, kCommand, nullptr);
    manager.request(INFO_SYNC_TYPE_CMD, nullptr, nullptr);
    manager.request(INFO_SYNC_TYPE_COLLECT, nullptr, nullptr);
    EXPECT_EQ(out, before);
    manager.request(INFO_SYNC_TYPE_CMD, nullptr, &out);
    EXPECT_EQ(out, nullptr);
    manager.request(INFO_SYNC_TYPE_CMD, kCommand, &out);
    EXPECT_STREQ(static_cast<const char*>(out), "enabled");
}

TEST_F(Manager, SwitchedOperationsUseTheOtherManager) {
    auto& entry = *static_cast<InfoSynchronizerManager*>(GetInstance());
    EXPECT_EQ(&entry, GetInstance());
    EXPECT_NE(&entry, &manager);
    doubles::takeJournal();
    entry.registerSnapshotRequestRecord("A");
    EXPECT_EQ(queue.records.count("A"), 1U);
    entry.updateAnchorFrame("A", 1);  // an update stays with its own queue
    entry.snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT);
    entry.unregisterSnapshotRequestRecord("A");
    EXPECT_EQ(queue.records.size(), 0U);
}

TEST_F(Manager, WithoutAQueueNothingIsRegistered) {
    const auto queueKept = std::exchange(manager.mRequestRecordQueue, nullptr);
    manager.registerSnapshotRequestRecord("A");
    manager.unregisterSnapshotRequestRecord("A");
    manager.mRequestRecordQueue = queueKept;
    EXPECT_EQ(queue.records.size(), 0U);
}

TEST_F(Manager, FlushReportsTypeZeroOnlyAndKeepsTheRecord) {
    const auto noting = std::make_shared<Noting>();  // not the one to be asked
    const auto second = std::exchange(manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT_ALT], noting);
    doubles::takeJournal();
    queue.emplace_back("A");
    for (const int type : {-1, 1, 2, 3, 0, 0}) {
        doubles::note("type", type);
        manager.snapshotRequestInfoFlush("A", static_cast<InfoSyncType>(type));
    }
    manager.snapshotRequestInfoFlush("B", INFO_SYNC_TYPE_COLLECT);
    manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT_ALT] = second;
    EXPECT_EQ(queue.records.count("A"), 1U);
}

TEST_F(Manager, FlushHoldsTheMutexUntilTheReportIsSentOrThrown) {
    const auto tryLock = [this] {
        return std::unique_lock<std::mutex>(queue.mutex, std::try_to_lock).owns_lock();
    };
    const auto isFree = [&] { return std::async(std::launch::async, tryLock).get(); };
    const auto flush = [this] { manager.snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT); };
    queue.emplace_back("A");
    doubles::onCall = [&] { EXPECT_FALSE(isFree()); };
    doubles::onQuery = [&](std::string& /*key*/) {
        EXPECT_TRUE(isFree());
        return "enabled";
    };
    bool lastLineWasLocked = false;
    doubles::onLog = [&] { lastLineWasLocked = !isFree(); };
    EXPECT_EQ(doubles::locksOf(&queue.mutex, flush), 2);
    EXPECT_TRUE(lastLineWasLocked);
    doubles::onLog = nullptr;
    doubles::takeJournal();
    const auto kept = queue.records;
    doubles::locksOf(&queue.mutex, flush, [this] { queue.records.clear(); });
    doubles::note("removed before the flush has the mutex");
    queue.records = kept;
    doubles::onCall = [] { throw std::runtime_error("gone"); };
    EXPECT_THROW(flush(), std::runtime_error);
    EXPECT_TRUE(isFree());
}

TEST_F(Manager, LogsGoThroughTheirGates) {
    struct Gates {
        int32_t level;
        uint32_t group, mask;
        int locks;  // the two changes', and one each for the size if there is a log to print it
    };
    for (const Gates& gates :
         {Gates{4, 64, 1, 4}, Gates{4, UINT32_MAX, 0, 4}, Gates{5, 64, 0, 2}, Gates{5, 64, 1, 4},
          Gates{6, 64, 0, 2}, Gates{6, 64, 1U << 31, 4}, Gates{0, ~64U, UINT32_MAX, 2}}) {
        queue.emplace_back("A");
        zudebug::gZuCamLogLevel = gates.level;
        zudebug::gZuCamLogGroup = gates.group;
        zudebug::gZuCamDebugMask = gates.mask;
        doubles::note("== level", gates.level);
        const auto change = [this] {
            manager.registerSnapshotRequestRecord("A");  // a warning, and an information
            manager.unregisterSnapshotRequestRecord("A");
        };
        EXPECT_EQ(doubles::locksOf(&queue.mutex, change), gates.locks);
    }
}

constexpr RequestType kOtherType = static_cast<RequestType>(6);

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

struct Update {
    const char* text;
    std::function<void(InfoSynchronizerManager& manager, const char* image)> run;
};
// clang-format off
#define UPDATE(...) \
    {#__VA_ARGS__, [](InfoSynchronizerManager& manager, [[maybe_unused]] const char* image) { manager.__VA_ARGS__; }}
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
        UPDATE(updateNodeProcTime(image, "n", 10.5, -1.5, 13.75)),
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

}  // namespace
}  // namespace camInfosync
