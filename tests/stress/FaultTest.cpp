// What is left of the library when memory ends or the service fails.

#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <android/log.h>
#include <zudebug/Log.h>

#include "Allocations.h"
#include "InfoSynchronizerManager.h"
#include "ServiceBase.h"

namespace camInfosync {
namespace {

// Longer than a string holds without an allocation.
const std::string kImage = "an image whose name is kept on the heap";
const std::string kNode = "a node whose name is kept on the heap";

class Service final : public ServiceBase {
  public:
    void setParam(const std::string&, const std::string&, const std::string&) override {
        onCall("");
    }
    void reportEvent(const std::string&, const std::string& event) override { onCall(event); }
    void finishReport(std::string, int32_t, int32_t) override { onCall(""); }
    std::string queryValue(std::string) override { return onQuery(); }

    std::function<void(const std::string& event)> onCall = [](const std::string&) {};
    std::function<std::string()> onQuery = [] { return "enabled"; };
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
    static void flush() { manager().snapshotRequestInfoFlush(kImage, INFO_SYNC_TYPE_COLLECT); }

    static bool mutexIsFree() {
        bool isFree = false;
        std::thread([&isFree] {
            isFree = std::unique_lock<std::mutex>(queue().mutex, std::try_to_lock).owns_lock();
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
    std::string answer;
    service.onQuery = [&answer] { return answer; };
    CmdExecutor executor(INFO_SYNC_TYPE_CMD);
    const auto ask = [&executor](const char* key) {
        return std::string(static_cast<const char*>(executor.requestCmd(key)));
    };
    for (const char* key : {"a", "b"}) {
        for (int round = 0; round < 3; ++round) {
            answer = kImage + std::to_string(round);
            for (int succeeding = 0; succeeding < 20; ++succeeding) {
                allocations::left = succeeding;
                try {
                    ask(key);
                } catch (const std::bad_alloc&) {
                }
                allocations::left = -1;
                EXPECT_EQ(ask("other"), answer);
            }
            EXPECT_EQ(ask(key), answer);
        }
    }
}

TEST_F(Fault, EveryOperationSurvivesTheEndOfMemory) {
    const RequestRecord record(REQUEST_TYPE_DEFAULT);
    // Lists of short texts only: libc++ 14 leaks a vector if the copy of an element throws.
    const SnapshotInfo::ZuAlgoInfo algo{{"node"}, {{kNode, 1.0}}, {}, {}, {}};
    const std::vector<std::string> nodes{"node:more", "other"};
    const std::vector<uint32_t> cameras{1, 2, 3};
    const std::vector<int32_t> ids{2, 3};
    const SnapshotInfo::VendorResultInfo results{{2, kNode}};
    const std::map<std::string, uint32_t> post{{kNode, 1}};
    const std::map<std::string, int64_t> stages{{TimeStageToChar[3], 1}};
    const std::map<std::string, std::string> states{{kNode, kNode}};
    InfoSynchronizerManager& m = manager();
    const auto construct = [] { const InfoSynchronizerManager fresh; };
    const auto usePool = [text = kNode] {
        ThreadPool pool(3, 0);
        pool.addThread();
        pool.enqueue([text] {});
    };
    const char* key = "snapshotInfoCollectEnable";
    void* out = nullptr;
    const std::pair<const char*, std::function<void()>> operations[] = {
            {"construction", construct},
            {"pool", usePool},
            {"executor", [&] { CmdExecutor(INFO_SYNC_TYPE_CMD).requestCmd(key); }},
            {"command", [&] { m.request(INFO_SYNC_TYPE_CMD, key, &out); }},
            {"register", [&] { m.registerSnapshotRequestRecord(kNode), queue().remove(kNode); }},
            {"unregister", [&] { m.unregisterSnapshotRequestRecord(kImage); }},
            {"flush", [] { flush(); }},
            {"request", [&] { m.request(INFO_SYNC_TYPE_COLLECT_ALT, &record, nullptr); }},
            {"frame", [&] { m.updateFrameInfo(kImage, 1, kNode, cameras, 1); }},
            {"request info", [&] { m.updateRequestInfo(kImage, 1, 2, true, 3, ids, ids); }},
            {"ui", [&] { m.updateUIInfo(kImage, REQUEST_TYPE_DEFAULT, 1, 2, 3, kNode); }},
            {"3a", [&] { m.updateAnchor3aInfo(kImage, 1, 2, 3, 4); }},
            {"anchor frame", [&] { m.updateAnchorFrame(kImage, 1); }},
            {"vendor result", [&] { m.updateVndResultInfo(kImage, 2, 1); }},
            {"vendor results", [&] { m.updateVndResultInfo(kImage, results); }},
            {"algorithms", [&] { m.updateZuAlgoInfo(kImage, nodes); }},
            {"algorithm info", [&] { m.updateZuAlgoInfo(kImage, algo); }},
            {"error", [&] { m.updateSnapshotErrorInfo(kImage, kNode.c_str()); }},
            {"post", [&] { m.updatePostProcInfo(post); }},
            {"stage 0", [&] { m.updateSnapshotTimeInfo(kImage, 0); }},
            {"stage 3", [&] { m.updateSnapshotTimeInfo(kImage, 3); }},
            {"stage 6", [&] { m.updateSnapshotTimeInfo(kImage, 6); }},
            {"stages", [&] { m.updateSnapshotTimeInfo(kImage, stages); }},
            {"node time", [&] { m.updateNodeProcTime(kImage, kNode, 1, -1, 3); }},
            {"node state", [&] { m.updateNodeProcState(kImage, kNode, 1); }},
            {"node states", [&] { m.updateNodeProcState(kImage, states); }},
    };
    for (const bool warm : {false, true}) {  // the second time with nothing left to be made once
        for (const auto& [name, operation] : operations) {
            SCOPED_TRACE(name);
            failEach(operation, warm);
        }
    }
}

TEST_F(Fault, ServiceMayThrowFromEachCall) {
    registerImage();
    // Eight parameters, the submit event, one node's two events, the closing call.
    for (int last = 1; last <= 12; ++last) {
        int calls = 0;
        service.onCall = [&](const std::string&) {
            if (++calls == last) {
                throw std::runtime_error("service");
            }
        };
        EXPECT_THROW(flush(), std::runtime_error) << last;
        EXPECT_EQ(calls, last);
        EXPECT_TRUE(mutexIsFree());
        expectUnharmed();
    }
    const auto report = [record = queue().records.at(kImage).get()] {
        manager().request(INFO_SYNC_TYPE_COLLECT_ALT, record, nullptr);
    };
    service.onCall = [](const std::string&) { throw std::runtime_error("service"); };
    EXPECT_THROW(report(), std::runtime_error);
    int calls = 0;
    service.onCall = [&calls](const std::string&) { ++calls; };
    flush();
    EXPECT_EQ(calls, 12);
    service.onQuery = []() -> std::string { throw std::runtime_error("service"); };
    void* out = this;
    EXPECT_THROW(manager().request(INFO_SYNC_TYPE_CMD, "key", &out), std::runtime_error);
    EXPECT_EQ(out, this);
    EXPECT_THROW(manager().registerSnapshotRequestRecord("other"), std::runtime_error);
    EXPECT_THROW(manager().unregisterSnapshotRequestRecord(kImage), std::runtime_error);
    EXPECT_THROW(flush(), std::runtime_error);
    service.onQuery = [] { return "enabled"; };
    EXPECT_TRUE(mutexIsFree());
    expectUnharmed();
    EXPECT_EQ(queue().records.size(), 1U);
}

TEST_F(Fault, ServiceMayAskWhileItIsTold) {
    registerImage();
    int answers = 0;
    service.onCall = [&](const std::string&) {
        void* out = nullptr;
        manager().request(INFO_SYNC_TYPE_CMD, "snapshotInfoCollectEnable", &out);
        answers += std::string("enabled") == static_cast<const char*>(out) ? 1 : 0;
    };
    flush();
    EXPECT_EQ(answers, 12);
}

}  // namespace
}  // namespace camInfosync
