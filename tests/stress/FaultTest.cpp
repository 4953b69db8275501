// What is left of the library when memory ends.

#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <zudebug/Log.h>

#include "Allocations.h"
#include "InfoSynchronizerManager.h"
#include "ServiceBase.h"
#include "Updates.h"

namespace camInfosync {
namespace {

// Longer than a string holds without an allocation.
const std::string kImage = "an image whose name is kept on the heap";

class Service final : public ServiceBase {
  public:
    void setParam(const std::string&, const std::string&, const std::string&) override {}
    void reportEvent(const std::string&, const std::string&) override {}
    void finishReport(std::string, int32_t, int32_t) override {}
    std::string queryValue(std::string) override { return answer; }

    std::string answer = "enabled";
};

class Fault : public testing::Test {
  protected:
    Fault() {
        zudebug::gZuCamLogLevel = INT32_MAX;
        InfoSynchronizer::mIntentAwareImpl = &service;
    }
    ~Fault() override { forgetAll(); }

    static InfoSynchronizerManager& manager() { return InfoSynchronizerManager::getInstance(); }
    static RequestRecordQueue& queue() { return *manager().mRequestRecordQueue; }

    static bool mutexIsFree() {
        bool isFree = false;
        // Unlike with std::async, nothing of the thread is in use once it is joined.
        std::thread([&isFree] {
            isFree = std::unique_lock(queue().mutex, std::try_to_lock).owns_lock();
        }).join();
        return isFree;
    }

    static void registerImage() {
        manager().registerSnapshotRequestRecord(kImage);
        manager().updateFrameInfo(kImage, 1, "before", {7}, 1);
        RequestRecord& record = *queue().records.at(kImage);
        record.hasError = true;
        record.errorInfo = {"before"};
        record.snapshotInfo.requestInfo.expectedResultIds = {2, 3};
        record.snapshotInfo.vendorResultInfo = {{1, "before"}};
        record.snapshotInfo.zuAlgoInfo.algoTimeA = {{"before", 1.0}};
        record.snapshotInfo.zuAlgoInfo.algoTimeC = {{"before", 2.0}};
        record.snapshotInfo.zuAlgoInfo.algoState = {{"before", "OK"}};
        record.snapshotInfo.timeInfo = {{"before", 1}};
        queue().errorImageNames = {"before"};
        queue().postProcInfo = {{"before", 1}};
    }

    static void expectUnharmed() {
        ASSERT_EQ(queue().records.count(kImage), 1U);
        const RequestRecord& record = *queue().records.at(kImage);
        EXPECT_TRUE(record.hasError);
        EXPECT_EQ(record.errorInfo.at(0), "before");
        EXPECT_EQ(record.frameInfo.camIds.at(0), 7U);
        EXPECT_EQ(record.frameInfo.imageName, kImage);
        EXPECT_EQ(record.snapshotInfo.vendorResultInfo.at(1), "before");
        EXPECT_EQ(record.snapshotInfo.zuAlgoInfo.algoTimeA.at("before"), 1.0);
        EXPECT_EQ(record.snapshotInfo.zuAlgoInfo.algoState.at("before"), "OK");
        EXPECT_EQ(record.snapshotInfo.timeInfo.at("before"), 1);
        EXPECT_EQ(queue().errorImageNames.at(0), "before");
        EXPECT_EQ(queue().postProcInfo.at("before"), 1U);
    }

    static void forgetAll() {
        queue().records.clear();
        std::vector<std::string>().swap(queue().errorImageNames);
        queue().postProcInfo.clear();
    }

    // Lets no allocation of `operation` succeed, then one, and so on until it succeeds.
    static void failEach(const std::function<void()>& operation, bool warm) {
        for (int succeeding = 0; succeeding < 1000; ++succeeding) {
            const long before = allocations::inUse();
            registerImage();
            bool failed = false;
            allocations::left = succeeding;
            try {
                operation();
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            allocations::left = -1;
            EXPECT_TRUE(mutexIsFree());
            if (failed) {
                expectUnharmed();
                operation();
            }
            forgetAll();
            if (warm) {
                EXPECT_EQ(allocations::inUse(), before);
            }
            if (!failed) {
                return;
            }
        }
        ADD_FAILURE() << "it never succeeds";
    }

    Service service;
};

TEST_F(Fault, WorkersNeedNoMemoryOfTheirOwn) {
    std::atomic<int> ran{0};
    allocations::leftAtStart = 0;
    {
        ThreadPool pool(3, 0);
        for (int i = 0; i < 9; ++i) {
            // Too large for a task to be copied without memory.
            pool.enqueue([&ran, large = std::array<char, 64>{}] { ran += large.size() == 64; });
        }
    }
    allocations::leftAtStart = -1;
    EXPECT_EQ(ran, 9);
}

TEST_F(Fault, AnswersAreKeptWholeOrNotAtAll) {
    CmdExecutor executor(INFO_SYNC_TYPE_CMD);
    const auto ask = [&executor](const char* key) {
        return std::string(static_cast<const char*>(executor.requestCmd(key)));
    };
    for (const char* key : {"a", "b"}) {
        for (int round = 0; round < 3; ++round) {
            service.answer = kImage + std::to_string(round);
            for (int succeeding = 0; succeeding < 20; ++succeeding) {
                allocations::left = succeeding;
                try {
                    ask(key);
                } catch (const std::bad_alloc&) {
                }
                allocations::left = -1;
                EXPECT_EQ(ask("other"), service.answer);
            }
            EXPECT_EQ(ask(key), service.answer);
        }
    }
}

TEST_F(Fault, EveryOperationSurvivesTheEndOfMemory) {
    const RequestRecord record(REQUEST_TYPE_DEFAULT);
    InfoSynchronizerManager& m = manager();
    const auto construct = [] { const InfoSynchronizerManager fresh; };
    const auto usePool = [text = kLong] {
        ThreadPool pool(3, 0);
        pool.addThread();
        pool.enqueue([text] {});
    };
    const char* key = "snapshotInfoCollectEnable";
    void* out = nullptr;
    std::vector<std::pair<const char*, std::function<void()>>> operations = {
            {"construction", construct},
            {"pool", usePool},
            {"executor", [&] { CmdExecutor(INFO_SYNC_TYPE_CMD).requestCmd(key); }},
            {"command", [&] { m.request(INFO_SYNC_TYPE_CMD, key, &out); }},
            {"register", [&] { m.registerSnapshotRequestRecord(kLong), queue().remove(kLong); }},
            {"unregister", [&] { m.unregisterSnapshotRequestRecord(kImage); }},
            {"flush", [&] { m.snapshotRequestInfoFlush(kImage, INFO_SYNC_TYPE_COLLECT); }},
            {"request", [&] { m.request(INFO_SYNC_TYPE_COLLECT_ALT, &record, nullptr); }},
            {"stage 3", [&] { m.updateSnapshotTimeInfo(kImage, 3); }},
            {"stage 6", [&] { m.updateSnapshotTimeInfo(kImage, 6); }},
    };
    for (const Update& update : updates) {
        operations.emplace_back(update.text, [&] { update.run(m, kImage.c_str()); });
    }
    for (const bool warm : {false, true}) {  // the second time with nothing left to be made once
        for (const auto& [name, operation] : operations) {
            SCOPED_TRACE(name);
            failEach(operation, warm);
        }
    }
}

}  // namespace
}  // namespace camInfosync
