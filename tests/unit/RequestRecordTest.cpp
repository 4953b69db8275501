// What a record holds before its first update.

#include <cstring>
#include <new>

#include "Doubles.h"
#include "RecordModel.h"
#include "RequestRecord.h"

namespace camInfosync {
namespace {

class Record : public doubles::Test {};

TEST_F(Record, StartsStampedAndEmptyWhateverTheMemoryHeld) {
    alignas(RequestRecord) unsigned char memory[sizeof(RequestRecord)];
    std::memset(memory, 0xAA, sizeof(memory));
    doubles::stopClock(77, 5);
    fuzz::clockTime = {77, 5};
    RequestRecord expected = fuzz::newRecord();
    expected.snapshotInfo.requestType = static_cast<RequestType>(6);
    const auto* record = new (memory) RequestRecord(static_cast<RequestType>(6));
    EXPECT_TRUE(fuzz::contentOf(*record) == fuzz::contentOf(expected));
    record->~RequestRecord();
}

}  // namespace
}  // namespace camInfosync
