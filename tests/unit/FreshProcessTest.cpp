// What needs a process of its own: loading, the switches that are read then, and which calls
// build a manager.

#include <system_error>

#include "Doubles.h"
#include "InfoSynchronizerManager.h"

namespace camInfosync {
namespace {

// Taken before main, and so before a test forgets it.
const std::vector<std::string> loading = doubles::takeJournal();

class FreshProcess : public doubles::Test {};

TEST_F(FreshProcess, LoadingReadsThePropertiesAndFindsTheService) {
    for (const std::string& line : loading) {
        doubles::note(line);
    }
    EXPECT_EQ(InfoSynchronizer::mIntentAwareImpl, doubles::service());
    doubles::note("one manager:");
    InfoSynchronizerManager::getInstance();
    InfoSynchronizerManager::getInstance();
}

TEST_F(FreshProcess, StageOfAKnownImageBuildsTheOtherManager) {
    auto& manager = *static_cast<InfoSynchronizerManager*>(GetInstance());
    manager.mRequestRecordQueue->emplace_back("IMG");
    doubles::note("built, and not again:");
    GetInstance();
    manager.updateSnapshotTimeInfo("NONE", 1U);
    manager.updateSnapshotTimeInfo("IMG", 0U);
    doubles::note("without a thread:");
    doubles::threadsLeft = 0;
    EXPECT_THROW(manager.updateSnapshotTimeInfo("IMG", 1U), std::system_error);
    doubles::threadsLeft = -1;
    EXPECT_EQ(manager.mRequestRecordQueue->records.at("IMG")->snapshotInfo.timeInfo.size(), 1U);
    doubles::note("by a stage that is ignored otherwise:");
    manager.updateSnapshotTimeInfo("IMG", 15U);
    manager.updateSnapshotTimeInfo("IMG", 1U);
}

TEST_F(FreshProcess, SwitchDecidesEveryGatedOperation) {
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    RequestRecordQueue& queue = *manager.mRequestRecordQueue;
    doubles::takeJournal();
    for (const char* answer : {"enabled", "", "enable", "enabled ", "Enabled"}) {
        doubles::onQuery = [answer](const std::string&) { return answer; };
        doubles::note("== answer", std::string(answer));
        manager.registerSnapshotRequestRecord("A");
        doubles::note("records", queue.records.size());
        manager.snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT_ALT);
        queue.records.try_emplace("A", std::make_shared<RequestRecord>(REQUEST_TYPE_DEFAULT));
        manager.unregisterSnapshotRequestRecord("A");
        doubles::note("records", queue.records.size());
        queue.records.clear();
    }
}

}  // namespace
}  // namespace camInfosync
