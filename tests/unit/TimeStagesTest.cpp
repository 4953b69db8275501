// The time line of a snapshot.

#include "Doubles.h"
#include "InfoSynchronizerManager.h"

namespace camInfosync {
namespace {

class TimeStages : public doubles::Test {
  protected:
    TimeStages() {
        doubles::stopClock(10, 900000000);
        manager.mRequestRecordQueue->emplace_back("IMG");
        doubles::takeJournal();
        doubles::stopClock(12, 100000000);
    }
    RequestRecord& record() { return *manager.mRequestRecordQueue->records.at("IMG"); }
    std::map<std::string, int64_t>& timeInfo() { return record().snapshotInfo.timeInfo; }

    // Built first, so that no stage builds it within a test.
    InfoSynchronizerManager& instance = InfoSynchronizerManager::getInstance();
    InfoSynchronizerManager manager;
};

TEST_F(TimeStages, EachStageWritesItsKeys) {
    for (uint32_t i = 0; i <= 16; ++i) {
        const uint32_t stage = i < 16 ? i : UINT32_MAX;
        timeInfo().clear();
        manager.updateSnapshotTimeInfo("IMG", stage);
        doubles::note(std::to_string(stage), timeInfo());
        for (auto& [key, value] : timeInfo()) {
            value = 300;
        }
        manager.updateSnapshotTimeInfo("IMG", stage);
        doubles::note("  over 300", timeInfo());
    }
    EXPECT_EQ(record().createTime.tv_sec, 10);
    EXPECT_EQ(record().requestTime.tv_sec, 12);
    EXPECT_EQ(record().requestTime.tv_nsec, 100000000);
    EXPECT_EQ(doubles::clockReads, 34);
}

TEST_F(TimeStages, IntervalHasNoBorrowAndWraps) {
    const std::pair<timespec, int64_t> cases[] = {
            {{10, 900000000}, 0},
            {{11, 0}, 100},
            {{11, 899999999}, 1000},  // a borrow would give 999
            {{10, 899000001}, 0},     // toward zero, not down
            {{9, 900000001}, -1000},  // a borrow would give -999
            {{8, 400000000}, -2500},
            {{10 + 2147484, 547000000}, INT32_MAX},
            {{10 + 2147484, 548000000}, INT32_MIN},
            {{10 + 4294968, 900000000}, 704},
    };
    for (const auto& [now, interval] : cases) {
        doubles::stopClock(now.tv_sec, now.tv_nsec);
        manager.updateSnapshotTimeInfo("IMG", 1U);
        EXPECT_EQ(timeInfo().at("2request_to_vendor"), interval);
    }
}

TEST_F(TimeStages, AnchorTimeIsComputedInDoubles) {
    const std::pair<int64_t, int64_t> cases[] = {
            {1300, -100},
            {(1LL << 53) + 1, 1200 - (1LL << 53)},  // the post time loses its last bit
            {INT64_MAX, INT64_MIN + 1024},          // doubles are that far apart there
            {INT64_MIN, INT64_MAX},                 // past the end
    };
    for (const auto& [post, anchor] : cases) {
        timeInfo()["5request_to_post"] = post;
        manager.updateSnapshotTimeInfo("IMG", 6U);
        EXPECT_EQ(timeInfo().at("7anchor_time"), anchor) << post;
    }
}

TEST_F(TimeStages, ReadyValuesAreStoredAndLoggedInStageOrder) {
    timeInfo()["8getbuffer_from_fwk"] = 0;
    std::map<std::string, int64_t> given{{"no stage", 5}, {"16", 6}};
    for (const char* stage : TimeStageToChar) {
        given[stage] = stage[0] == '3' ? INT64_MAX : -7 - static_cast<int64_t>(given.size());
    }
    manager.updateSnapshotTimeInfo("IMG", given);
    manager.updateSnapshotTimeInfo("IMG", std::map<std::string, int64_t>{});
    doubles::note("timeInfo", timeInfo());
    EXPECT_EQ(doubles::clockReads, 0);
}

TEST_F(TimeStages, ClockIsReadBeforeTheImageIsLookedFor) {
    doubles::locksOf(
            &manager.mRequestRecordQueue->mutex,
            [this] { manager.updateSnapshotTimeInfo("IMG", 1U); },
            [] { EXPECT_EQ(doubles::clockReads, 1); });
    manager.updateSnapshotTimeInfo("NONE", 14U);
    manager.updateSnapshotTimeInfo("NONE", UINT32_MAX);
    EXPECT_EQ(doubles::clockReads, 3);
}

}  // namespace
}  // namespace camInfosync
