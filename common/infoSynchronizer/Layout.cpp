// Pins the layout of records and of the queue, which callers read and hand over by value, for the
// phone's C++ library. A caller that was compiled against other numbers reads wrong fields.

#include <cstddef>  // IWYU pragma: keep - any header says which C++ library it is

#if defined(_LIBCPP_VERSION) && defined(__LP64__)

#include "RequestRecord.h"
#include "RequestRecordQueue.h"

namespace camInfosync {
namespace {

#define INFOSYNC_PIN_SIZE(type, size)                                \
    static_assert(sizeof(type) == (size), #type                      \
                  " changed its size: callers compiled before this " \
                  "allocate and copy too much or too little of it")
#define INFOSYNC_PIN_OFFSET(type, member, offset)                       \
    static_assert(offsetof(type, member) == (offset),                   \
                  #type "::" #member                                    \
                        " moved: callers compiled before this read or " \
                        "write another field in its place")

INFOSYNC_PIN_SIZE(FrameInfo, 88);
INFOSYNC_PIN_OFFSET(FrameInfo, timestamp, 8);
INFOSYNC_PIN_OFFSET(FrameInfo, camIds, 32);
INFOSYNC_PIN_OFFSET(FrameInfo, frameExtra, 56);
INFOSYNC_PIN_OFFSET(FrameInfo, imageName, 64);

using RequestInfo = SnapshotInfo::RequestInfo;
INFOSYNC_PIN_SIZE(RequestInfo, 72);
INFOSYNC_PIN_OFFSET(RequestInfo, reqValueB, 4);
INFOSYNC_PIN_OFFSET(RequestInfo, anchorFrame, 8);
INFOSYNC_PIN_OFFSET(RequestInfo, reqFlag, 12);
INFOSYNC_PIN_OFFSET(RequestInfo, reqValue64, 16);
INFOSYNC_PIN_OFFSET(RequestInfo, reqIdsA, 24);
INFOSYNC_PIN_OFFSET(RequestInfo, expectedResultIds, 48);

using ZuAlgoInfo = SnapshotInfo::ZuAlgoInfo;
INFOSYNC_PIN_SIZE(ZuAlgoInfo, 120);
INFOSYNC_PIN_OFFSET(ZuAlgoInfo, algoTimeA, 24);
INFOSYNC_PIN_OFFSET(ZuAlgoInfo, algoTimeB, 48);
INFOSYNC_PIN_OFFSET(ZuAlgoInfo, algoTimeC, 72);
INFOSYNC_PIN_OFFSET(ZuAlgoInfo, algoState, 96);

INFOSYNC_PIN_SIZE(SnapshotInfo::VendorResultInfo, 24);
INFOSYNC_PIN_SIZE(SnapshotInfo, 304);
INFOSYNC_PIN_OFFSET(SnapshotInfo, camMode, 4);
INFOSYNC_PIN_OFFSET(SnapshotInfo, faceDetect, 8);
INFOSYNC_PIN_OFFSET(SnapshotInfo, zoomRatio, 12);
INFOSYNC_PIN_OFFSET(SnapshotInfo, uiExtra, 16);
INFOSYNC_PIN_OFFSET(SnapshotInfo, requestInfo, 40);
INFOSYNC_PIN_OFFSET(SnapshotInfo, vendorResultInfo, 112);
INFOSYNC_PIN_OFFSET(SnapshotInfo, zuAlgoInfo, 136);
INFOSYNC_PIN_OFFSET(SnapshotInfo, fstop, 256);
INFOSYNC_PIN_OFFSET(SnapshotInfo, iso, 260);
INFOSYNC_PIN_OFFSET(SnapshotInfo, lux, 264);
INFOSYNC_PIN_OFFSET(SnapshotInfo, exposureTime, 272);
INFOSYNC_PIN_OFFSET(SnapshotInfo, timeInfo, 280);

INFOSYNC_PIN_SIZE(RequestRecord, 464);
INFOSYNC_PIN_OFFSET(RequestRecord, hasError, 24);
INFOSYNC_PIN_OFFSET(RequestRecord, createTime, 32);
INFOSYNC_PIN_OFFSET(RequestRecord, requestTime, 48);
INFOSYNC_PIN_OFFSET(RequestRecord, frameInfo, 64);
INFOSYNC_PIN_OFFSET(RequestRecord, snapshotInfo, 152);
INFOSYNC_PIN_OFFSET(RequestRecord, reserved64, 456);

// What follows the mutex is sized by the C library, and nothing outside relies on it.
INFOSYNC_PIN_OFFSET(RequestRecordQueue, errorImageNames, 24);
INFOSYNC_PIN_OFFSET(RequestRecordQueue, records, 48);
INFOSYNC_PIN_OFFSET(RequestRecordQueue, mutex, 72);

}  // namespace
}  // namespace camInfosync

#endif
