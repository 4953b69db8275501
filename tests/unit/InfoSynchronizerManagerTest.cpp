// The manager: the two of them, dispatch, the flush, and the gates of the logs. See also
// fresh_process_test.py.

#include <sys/resource.h>

#include <chrono>
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

    void flush(const char* image) {
        manager.snapshotRequestInfoFlush(image, INFO_SYNC_TYPE_COLLECT);
    }
    bool isFree() { return doubles::isFree(queue.mutex); }

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
    flush("B");
    manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT_ALT] = second;
    EXPECT_EQ(queue.records.count("A"), 1U);
}

TEST_F(Manager, FlushHoldsTheMutexUntilTheReportIsSent) {
    queue.emplace_back("A");
    void* answer = nullptr;
    bool isReporting = false;
    doubles::onCall = [&](const doubles::Call& call) {
        const bool isQuery = call[0] == "queryValue";
        EXPECT_EQ(isFree(), isQuery && !isReporting);
        if (!isQuery) {
            isReporting = true;
            manager.request(INFO_SYNC_TYPE_CMD, kCommand, &answer);
            isReporting = false;
        }
    };
    bool lastLineWasLocked = false;
    doubles::onLog = [&] { lastLineWasLocked = !isFree(); };
    EXPECT_EQ(doubles::locksOf(&queue.mutex, [this] { flush("A"); }), 2);
    EXPECT_TRUE(lastLineWasLocked);
    doubles::takeJournal();
    doubles::locksOf(
            &queue.mutex, [this] { flush("A"); }, [this] { queue.records.clear(); });
    doubles::note("removed before the flush has the mutex");
}

TEST_F(Manager, ServiceMayThrowFromEachCall) {
    queue.emplace_back("A");
    SnapshotInfo::ZuAlgoInfo& algo = queue.records["A"]->snapshotInfo.zuAlgoInfo;
    algo.algoTimeA = algo.algoTimeC = {{"node", 1.0}};
    doubles::onCall = [](const auto& /*call*/) { throw std::runtime_error("service"); };
    void* out = this;
    EXPECT_THROW(manager.request(INFO_SYNC_TYPE_CMD, kCommand, &out), std::runtime_error);
    EXPECT_THROW(manager.request(INFO_SYNC_TYPE_COLLECT_ALT, &record, &out), std::runtime_error);
    EXPECT_THROW(manager.registerSnapshotRequestRecord("B"), std::runtime_error);
    EXPECT_THROW(manager.unregisterSnapshotRequestRecord("A"), std::runtime_error);
    // The query, eight parameters, the submit event, the node's two events, the closing call.
    for (int made = 0; made < 13; ++made) {
        doubles::onCall = [left = made](const auto& /*call*/) mutable {
            if (left-- == 0) {
                throw std::runtime_error("service");
            }
        };
        EXPECT_THROW(flush("A"), std::runtime_error) << made;
        ASSERT_TRUE(isFree());
    }
    EXPECT_EQ(out, this);
    EXPECT_EQ(queue.records.size(), 1U);
    doubles::takeJournal();
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

}  // namespace
}  // namespace camInfosync
