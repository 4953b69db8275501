// Vendor results, which build on what the record holds.

#include "Doubles.h"
#include "InfoSynchronizerManager.h"

namespace camInfosync {
namespace {

class UpdateRules : public doubles::Test {
  protected:
    UpdateRules() {
        manager.mRequestRecordQueue->emplace_back("IMG");
        manager.updateFrameInfo("IMG", 1, "", {}, 1);
        doubles::takeJournal();
    }

    InfoSynchronizerManager manager;
    SnapshotInfo& info() { return manager.mRequestRecordQueue->records.at("IMG")->snapshotInfo; }
};

TEST_F(UpdateRules, VendorResultOverwritesEarlierOnesUntilAllAreSeen) {
    const std::pair<std::vector<int32_t>, SnapshotInfo::VendorResultInfo> cases[] = {
            {{10, 11, 12}, {}},
            {{10, 11}, {{10, "seen"}}},
            {{10, 11}, {{10, "seen"}, {11, "seen"}}},
            {{10, 10}, {{10, "seen"}}},              // repeated ids count each time
            {{10, 11}, {{1, "seen"}, {2, "seen"}}},  // so do results that nobody expected
            {{}, {}},
    };
    for (const auto& [expected, results] : cases) {
        info().requestInfo.expectedResultIds = expected;
        info().vendorResultInfo = results;
        doubles::note("expected " + testing::PrintToString(expected) + ", before", results);
        manager.updateVndResultInfo("IMG", 11U, 0);
        doubles::note("after", info().vendorResultInfo);
    }
}

}  // namespace
}  // namespace camInfosync
