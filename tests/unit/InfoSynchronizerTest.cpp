// Synchronizers, dispatch to them, the two managers, and the gates of the logs.

#include <sys/resource.h>

#include <future>
#include <stdexcept>
#include <utility>

#include <zudebug/Log.h>

#include "Doubles.h"
#include "InfoSynchronizerManager.h"

namespace camInfosync {
namespace {

constexpr char kCommand[] = "snapshotInfoCollectEnable";

class Synchronizers : public doubles::Test {
  protected:
    Synchronizers() {
        queue.records.clear();
        doubles::takeJournal();
    }
    ~Synchronizers() override { InfoSynchronizer::mIntentAwareImpl = doubles::service(); }
    const char* ask(const char* key) { return static_cast<const char*>(executor.requestCmd(key)); }

    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    RequestRecordQueue& queue = *manager.mRequestRecordQueue;
    CmdExecutor executor{INFO_SYNC_TYPE_CMD};
    RequestRecord record{REQUEST_TYPE_DEFAULT};
};

TEST_F(Synchronizers, ExecutorAsksAfreshAndKeepsTheLastAnswerPerKey) {
    std::string answer = "on, and longer than any small text";
    doubles::onQuery = [&answer](std::string& key) {
        key = "overwritten";  // the service's own copy
        return answer;
    };
    const char* first = ask("a");
    EXPECT_EQ(first, answer);
    ask("b");
    EXPECT_EQ(ask("aa"), answer);  // between the two
    EXPECT_EQ(ask("a"), first);    // an equal answer is not written again
    answer = "off";
    EXPECT_STREQ(ask("a"), answer.c_str());
    InfoSynchronizer::mIntentAwareImpl = nullptr;
    EXPECT_STREQ(ask("a"), "");
}

TEST_F(Synchronizers, ManagerBuildsOnePerTypeAndOneThread) {
    std::promise<int> nice;
    InfoSynchronizerManager built;
    auto& synchronizers = built.mSynchronizers;
    EXPECT_EQ(synchronizers.size(), 3U);
    EXPECT_NE(synchronizers[INFO_SYNC_TYPE_COLLECT], synchronizers[INFO_SYNC_TYPE_COLLECT_ALT]);
    executor.requestInfo(&record);
    EXPECT_EQ(synchronizers[INFO_SYNC_TYPE_COLLECT]->requestCmd(kCommand), nullptr);
    EXPECT_EQ(executor.mStatus, 1);
    built.mThreadPool->enqueue([&nice] { nice.set_value(getpriority(PRIO_PROCESS, 0)); });
    EXPECT_EQ(nice.get_future().get(), 10);
    doubles::note("without a service:");
    InfoSynchronizer::mIntentAwareImpl = nullptr;
    doubles::threadsLeft = 1;
    const InfoSynchronizerManager silent;
    doubles::note("without a thread:");
    EXPECT_THROW(InfoSynchronizerManager(), std::system_error);
}

TEST_F(Synchronizers, RequestsGoToTheTypesSynchronizer) {
    void* const before = &manager;
    void* out = before;
    for (const int type : {-1, 3, 5, 0, 2}) {
        doubles::note("type", type);
        manager.request(static_cast<InfoSyncType>(type), &record, &out);
    }
    EXPECT_EQ(manager.mSynchronizers.size(), 3U);
    doubles::note("null arguments:");
    manager.request(INFO_SYNC_TYPE_CMD, kCommand, nullptr);
    manager.request(INFO_SYNC_TYPE_COLLECT, nullptr, nullptr);
    EXPECT_EQ(out, before);
    manager.request(INFO_SYNC_TYPE_CMD, nullptr, &out);
    EXPECT_EQ(out, nullptr);
    manager.request(INFO_SYNC_TYPE_CMD, kCommand, &out);
    EXPECT_STREQ(static_cast<const char*>(out), "enabled");
}

TEST_F(Synchronizers, GatedOperationsUseTheOtherManager) {
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

TEST_F(Synchronizers, WithoutAQueueNothingIsRegistered) {
    const auto queueKept = std::exchange(manager.mRequestRecordQueue, nullptr);
    manager.registerSnapshotRequestRecord("A");
    manager.unregisterSnapshotRequestRecord("A");
    manager.mRequestRecordQueue = queueKept;
    EXPECT_EQ(queue.records.size(), 0U);
}

TEST_F(Synchronizers, FlushReportsTypeZeroOnlyAndKeepsTheRecord) {
    queue.emplace_back("A");
    for (const int type : {-1, 1, 2, 3, 0, 0}) {
        doubles::note("type", type);
        manager.snapshotRequestInfoFlush("A", static_cast<InfoSyncType>(type));
    }
    manager.snapshotRequestInfoFlush("B", INFO_SYNC_TYPE_COLLECT);
    EXPECT_EQ(queue.records.count("A"), 1U);
}

TEST_F(Synchronizers, FlushHoldsTheMutexUntilTheReportIsSentOrThrown) {
    const auto tryLock = [this] {
        return std::unique_lock<std::mutex>(queue.mutex, std::try_to_lock).owns_lock();
    };
    const auto isFree = [&] { return std::async(std::launch::async, tryLock).get(); };
    const auto flush = [this] { manager.snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT); };
    queue.emplace_back("A");
    doubles::onCall = [&] { EXPECT_FALSE(isFree()); };
    EXPECT_EQ(doubles::locksOf(queue.mutex, flush), 2);
    doubles::takeJournal();
    doubles::onCall = [] { throw std::runtime_error("gone"); };
    EXPECT_THROW(flush(), std::runtime_error);
    EXPECT_TRUE(isFree());
}

TEST_F(Synchronizers, LogsGoThroughTheirGates) {
    struct Gates {
        int32_t level;
        uint32_t group, mask;
        int locks;  // the removal's, and one for the size if there is a log to print it
    };
    for (const Gates& gates :
         {Gates{4, 64, 1, 2}, Gates{4, UINT32_MAX, 0, 2}, Gates{5, 64, 0, 1}, Gates{5, 64, 1, 2},
          Gates{6, 64, 0, 1}, Gates{6, 64, 1U << 31, 2}, Gates{0, ~64U, UINT32_MAX, 1}}) {
        zudebug::gZuCamLogLevel = gates.level;
        zudebug::gZuCamLogGroup = gates.group;
        zudebug::gZuCamDebugMask = gates.mask;
        doubles::note("== level", gates.level);
        const auto remove = [this] { manager.unregisterSnapshotRequestRecord("A"); };
        EXPECT_EQ(doubles::locksOf(queue.mutex, remove), gates.locks);
    }
}

}  // namespace
}  // namespace camInfosync
