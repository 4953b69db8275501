// Reads the library's records, each field under its own name.

#pragma once

#include <time.h>

#include "FieldErrors.h"
#include "FieldReader.h"
#include "JsonTree.h"
#include "RequestRecord.h"

namespace replay {

inline void readValue(const JsonValue& value, timespec& out, const Path& path, Errors& errors) {
    Members(value, path, errors).read("sec", out.tv_sec).read("nsec", out.tv_nsec).finish("a time");
}

inline void readValue(const JsonValue& value, camInfosync::FrameInfo& out, const Path& path,
                      Errors& errors) {
    Members(value, path, errors)
            .read("frameNumber", out.frameNumber)
            .read("timestamp", out.timestamp)
            .read("camIds", out.camIds)
            .read("frameExtra", out.frameExtra)
            .read("imageName", out.imageName)
            .finish("frameInfo");
}

inline void readValue(const JsonValue& value, camInfosync::SnapshotInfo::RequestInfo& out,
                      const Path& path, Errors& errors) {
    Members(value, path, errors)
            .read("reqValueA", out.reqValueA)
            .read("reqValueB", out.reqValueB)
            .read("anchorFrame", out.anchorFrame)
            .read("reqFlag", out.reqFlag)
            .read("reqValue64", out.reqValue64)
            .read("reqIdsA", out.reqIdsA)
            .read("expectedResultIds", out.expectedResultIds)
            .finish("requestInfo");
}

inline void readValue(const JsonValue& value, camInfosync::SnapshotInfo::ZuAlgoInfo& out,
                      const Path& path, Errors& errors) {
    Members(value, path, errors)
            .read("algoList", out.algoList)
            .read("algoTimeA", out.algoTimeA)
            .read("algoTimeB", out.algoTimeB)
            .read("algoTimeC", out.algoTimeC)
            .read("algoState", out.algoState)
            .finish("zuAlgoInfo");
}

inline void readValue(const JsonValue& value, camInfosync::SnapshotInfo& out, const Path& path,
                      Errors& errors) {
    Members(value, path, errors)
            .read("requestType", out.requestType)
            .read("camMode", out.camMode)
            .read("faceDetect", out.faceDetect)
            .read("zoomRatio", out.zoomRatio)
            .read("uiExtra", out.uiExtra)
            .read("requestInfo", out.requestInfo)
            .read("vendorResultInfo", out.vendorResultInfo)
            .read("zuAlgoInfo", out.zuAlgoInfo)
            .read("fstop", out.fstop)
            .read("iso", out.iso)
            .read("lux", out.lux)
            .read("exposureTime", out.exposureTime)
            .read("timeInfo", out.timeInfo)
            .finish("snapshotInfo");
}

inline void readValue(const JsonValue& value, camInfosync::RequestRecord& out, const Path& path,
                      Errors& errors) {
    Members(value, path, errors)
            .read("errorInfo", out.errorInfo)
            .read("hasError", out.hasError)
            .read("createTime", out.createTime)
            .read("requestTime", out.requestTime)
            .read("frameInfo", out.frameInfo)
            .read("snapshotInfo", out.snapshotInfo)
            .read("reserved64", out.reserved64)
            .finish("record");
}

}  // namespace replay
