// What is known about one snapshot, and the texts that its codes stand for.

#pragma once

#include <time.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Export.h"

namespace camInfosync {

// Texts by code, as they appear in records. Constant data; indexed without a check.
//
//     time stage                                               node state
//      0 1request_to_zuhal    8 9mock_config_from_fwk           0 OK
//      1 2request_to_vendor   9 10mock_request_from_fwk         1 GetInputError
//      2 3result_from_vendor 10 11mock_result_to_fwk            2 GetOutputError
//      3 4result_to_fwk      11 12post_proc_time                3 FlushTask
//      4 5request_to_post    12 13shot_2_shot                   4 NodeProcessError
//      5 6request_to_algo    13 14shot_2_gallery               vendor result code
//      6 7anchor_time        14 15shot_2_view                   0 error_none     3 error_result
//      7 8getbuffer_from_fwk                                    1 error_device   4 error_buffer
//                                                               2 error_request
INFOSYNC_EXPORT extern const char* const TimeStageToChar[15];
INFOSYNC_EXPORT extern const char* const NodeProcInfoToChar[5];
INFOSYNC_EXPORT extern const char* const ResultErrorCodeToChar[5];

// The kind of a request. The library stores it and never branches on it; the callers own its
// values.
enum RequestType : int32_t {
    REQUEST_TYPE_DEFAULT = 1,  // given to a record at registration
};

// The frame that a snapshot was taken from. updateFrameInfo writes all of it.
struct FrameInfo {
    uint32_t frameNumber = 0;
    std::string timestamp;         // the caller's text, reported as it stands
    std::vector<uint32_t> camIds;  // grows with every updateFrameInfo; the first one is reported
    uint32_t frameExtra = 0;
    std::string imageName;  // empty until the first updateFrameInfo; findByImageName compares it
};

// Everything else that the pipeline's stages told about a snapshot.
struct SnapshotInfo {
    // The parameters of the request. updateAnchorFrame writes `anchorFrame` and nothing else
    // does; updateRequestInfo writes all the others.
    struct RequestInfo {
        int32_t reqValueA = 0;
        int32_t reqValueB = 0;
        int32_t anchorFrame = 0;  // index of the anchor frame
        bool reqFlag = false;
        uint64_t reqValue64 = 0;
        std::vector<int32_t> reqIdsA;
        std::vector<int32_t> expectedResultIds;  // ids that a vendor result is expected for
    };

    // Result id to its ResultErrorCodeToChar text, or to "not_return".
    using VendorResultInfo = std::map<int32_t, std::string>;

    // What the algorithm nodes told. The times are in the caller's units.
    struct ZuAlgoInfo {
        std::vector<std::string> algoList;             // "key" or "key:more"
        std::map<std::string, double> algoTimeA;       // node to start time
        std::map<std::string, double> algoTimeB;       // node to second time; -1.0 is a time-out
        std::map<std::string, double> algoTimeC;       // node to completion time
        std::map<std::string, std::string> algoState;  // node to state text
    };

    RequestType requestType = REQUEST_TYPE_DEFAULT;
    uint32_t camMode = 0;
    int32_t faceDetect = 0;
    float zoomRatio = 0.0F;
    std::string uiExtra;
    RequestInfo requestInfo;
    VendorResultInfo vendorResultInfo;
    ZuAlgoInfo zuAlgoInfo;
    float fstop = 0.0F;
    int32_t iso = 0;
    float lux = 0.0F;
    int64_t exposureTime = 0;
    std::map<std::string, int64_t> timeInfo;  // TimeStageToChar text to milliseconds
};

// One snapshot in flight. A plain value: copies are deep and independent.
//
// Thread safety: none of its own. A record that was reached through a queue is guarded by
// that queue's mutex.
struct RequestRecord {
    // Starts an empty record: reads the clock into `createTime` and keeps `type`. Scalars that
    // no argument sets are zero until their update.
    INFOSYNC_EXPORT explicit RequestRecord(RequestType type);

    std::vector<std::string> errorInfo;  // error texts in order of arrival
    bool hasError = false;               // set with every append to errorInfo, never cleared
    timespec createTime{};               // CLOCK_MONOTONIC at construction
    timespec requestTime{};              // CLOCK_MONOTONIC at time stage 0
    FrameInfo frameInfo;
    SnapshotInfo snapshotInfo;
    int64_t reserved64 = 0;  // carried along with copies, otherwise unused
};

}  // namespace camInfosync
