#include "RequestRecord.h"

#include <time.h>

namespace camInfosync {

// Deliberate: the leading number, which is the index plus 1, is part of each text.
const char* const TimeStageToChar[15] = {
        "1request_to_zuhal",     "2request_to_vendor",
        "3result_from_vendor",   "4result_to_fwk",
        "5request_to_post",      "6request_to_algo",
        "7anchor_time",          "8getbuffer_from_fwk",
        "9mock_config_from_fwk", "10mock_request_from_fwk",
        "11mock_result_to_fwk",  "12post_proc_time",
        "13shot_2_shot",         "14shot_2_gallery",
        "15shot_2_view",
};

const char* const NodeProcInfoToChar[5] = {
        "OK", "GetInputError", "GetOutputError", "FlushTask", "NodeProcessError",
};

const char* const ResultErrorCodeToChar[5] = {
        "error_none", "error_device", "error_request", "error_result", "error_buffer",
};

RequestRecord::RequestRecord(RequestType type) {
    clock_gettime(CLOCK_MONOTONIC, &createTime);
    snapshotInfo.requestType = type;
}

}  // namespace camInfosync
