// The store of records, without a manager.

#include <functional>
#include <memory>

#include "Doubles.h"
#include "RequestRecordQueue.h"

namespace camInfosync {
namespace {

class RecordQueue : public doubles::Test {
  protected:
    // What a visitor sees that stops after `most` records.
    std::string visited(const char* imageName, size_t most) {
        std::string keys;
        queue.findByImageName(imageName, [&](const std::shared_ptr<RequestRecord>& record) {
            keys += record->snapshotInfo.uiExtra;
            return keys.size() < most;
        });
        return keys;
    }

    RequestRecordQueue queue;
};

TEST_F(RecordQueue, KeepsOneStampedRecordPerName) {
    doubles::stopClock(77, 5);
    queue.emplace_back("a");
    const std::shared_ptr<RequestRecord> first = queue.records.at("a");
    EXPECT_EQ(first->createTime.tv_sec, 77);
    EXPECT_EQ(first->createTime.tv_nsec, 5);
    EXPECT_EQ(first->snapshotInfo.requestType, 1);
    queue.emplace_back("a");
    EXPECT_EQ(doubles::clockReads, 1);  // no second record was made
    EXPECT_EQ(queue.records.at("a"), first);
    queue.remove("b");
    EXPECT_EQ(queue.records.size(), 1U);
    queue.remove("a");
    EXPECT_EQ(queue.records.size(), 0U);
    EXPECT_EQ(first.use_count(), 1);
}

TEST_F(RecordQueue, RecordDiesAfterTheMutexIsFree) {
    bool wasFree = false;
    const auto destroy = [&](RequestRecord* record) {
        wasFree = doubles::isFree(queue.mutex);
        delete record;
    };
    auto record = std::make_unique<RequestRecord>(REQUEST_TYPE_DEFAULT);
    queue.records["a"] = std::shared_ptr<RequestRecord>(record.release(), destroy);
    queue.remove("a");
    EXPECT_TRUE(wasFree);
}

TEST_F(RecordQueue, FindsByTheFramesNameInKeyOrder) {
    for (const char* key : {"b", "c", "a", "x"}) {
        queue.emplace_back(key);
        queue.records.at(key)->snapshotInfo.uiExtra = key;
        queue.records.at(key)->frameInfo.imageName = key == std::string("x") ? "" : "x";
    }
    EXPECT_EQ(visited("x", 9), "abc");
    EXPECT_EQ(visited("x", 2), "ab");
    EXPECT_EQ(visited("xx", 9), "");
    EXPECT_EQ(visited("", 9), "x");
    queue.findByImageName("unknown", nullptr);
    EXPECT_THROW(queue.findByImageName("x", nullptr), std::bad_function_call);
}

}  // namespace
}  // namespace camInfosync
