// What a record holds before its first update, and the texts of the codes.

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
    EXPECT_TRUE(idsA.empty() && ids.empty() && info.timeInfo.empty());
    record->~RequestRecord();
}

TEST_F(Record, CodesHaveTheirTexts) {
    const auto joined = [](const auto& table) {
        std::string texts;
        for (const char* text : table) {
            texts += std::string(text) + ' ';
        }
        return texts;
    };
    EXPECT_EQ(joined(TimeStageToChar),
              "1request_to_zuhal 2request_to_vendor 3result_from_vendor 4result_to_fwk "
              "5request_to_post 6request_to_algo 7anchor_time 8getbuffer_from_fwk "
              "9mock_config_from_fwk 10mock_request_from_fwk 11mock_result_to_fwk "
              "12post_proc_time 13shot_2_shot 14shot_2_gallery 15shot_2_view ");
    EXPECT_EQ(joined(NodeProcInfoToChar),
              "OK GetInputError GetOutputError FlushTask NodeProcessError ");
    EXPECT_EQ(joined(ResultErrorCodeToChar),
              "error_none error_device error_request error_result error_buffer ");
}

}  // namespace
}  // namespace camInfosync
