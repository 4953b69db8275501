// What a record holds before its first update.

#include <cstring>
#include <new>
#include <tuple>

#include "Doubles.h"
#include "RequestRecord.h"

namespace camInfosync {
namespace {

class Record : public doubles::Test {};

TEST_F(Record, StartsStampedAndEmptyWhateverTheMemoryHeld) {
    alignas(RequestRecord) unsigned char memory[sizeof(RequestRecord)];
    std::memset(memory, 0xAA, sizeof(memory));
    doubles::stopClock(77, 5);
    const auto* record = new (memory) RequestRecord(static_cast<RequestType>(6));
    const SnapshotInfo& info = record->snapshotInfo;
    const auto& [reqValueA, reqValueB, anchorFrame, flag, value64, idsA, ids] = info.requestInfo;
    EXPECT_EQ(std::tuple(77, 5), std::tie(record->createTime.tv_sec, record->createTime.tv_nsec));
    EXPECT_EQ(std::tuple(0, 0), std::tie(record->requestTime.tv_sec, record->requestTime.tv_nsec));
    EXPECT_EQ(std::tuple(false, 0), std::tie(record->hasError, record->reserved64));
    EXPECT_EQ(std::tuple(0U, 0U),
              std::tie(record->frameInfo.frameNumber, record->frameInfo.frameExtra));
    EXPECT_EQ(std::tuple(6, 0U, 0, 0.0F),
              std::tie(info.requestType, info.camMode, info.faceDetect, info.zoomRatio));
    EXPECT_EQ(std::tuple(0.0F, 0, 0.0F, 0),
              std::tie(info.fstop, info.iso, info.lux, info.exposureTime));
    EXPECT_EQ(std::tuple(0, 0, 0, false, 0U),
              std::tie(reqValueA, reqValueB, anchorFrame, flag, value64));
    EXPECT_TRUE(idsA.empty() && ids.empty() && info.timeInfo.empty() && info.uiExtra.empty());
    EXPECT_TRUE(record->errorInfo.empty() && info.vendorResultInfo.empty());
    EXPECT_TRUE(record->frameInfo.timestamp.empty() && record->frameInfo.camIds.empty());
    EXPECT_TRUE(record->frameInfo.imageName.empty() && info.zuAlgoInfo.algoList.empty());
    EXPECT_TRUE(info.zuAlgoInfo.algoTimeA.empty() && info.zuAlgoInfo.algoTimeB.empty());
    EXPECT_TRUE(info.zuAlgoInfo.algoTimeC.empty() && info.zuAlgoInfo.algoState.empty());
    record->~RequestRecord();
}

}  // namespace
}  // namespace camInfosync
