// The collector's own copies, which the whole report is made from. The usual ones take no heap: a
// flush holds the queue's mutex while it copies.

#pragma once

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "FlatCopy.h"
#include "RequestRecord.h"

namespace camInfosync {

// The counterparts of the record's structures: the same members in the same order. What they
// mean stands in RequestRecord.h. A member added there is added here, and its structure counted
// below; until then nothing that copies records compiles.
struct FlatFrameInfo {
    uint32_t frameNumber;
    std::string_view timestamp;
    Span<uint32_t> camIds;
    uint32_t frameExtra;
    std::string_view imageName;
};

struct FlatRequestInfo {
    int32_t reqValueA;
    int32_t reqValueB;
    int32_t anchorFrame;
    bool reqFlag;
    uint64_t reqValue64;
    Span<int32_t> reqIdsA;
    Span<int32_t> expectedResultIds;
};

struct FlatZuAlgoInfo {
    Span<std::string_view> algoList;
    Span<std::pair<std::string_view, double>> algoTimeA;
    Span<std::pair<std::string_view, double>> algoTimeB;
    Span<std::pair<std::string_view, double>> algoTimeC;
    Span<std::pair<std::string_view, std::string_view>> algoState;
};

struct FlatSnapshotInfo {
    RequestType requestType;
    uint32_t camMode;
    int32_t faceDetect;
    float zoomRatio;
    std::string_view uiExtra;
    FlatRequestInfo requestInfo;
    Span<std::pair<int32_t, std::string_view>> vendorResultInfo;
    FlatZuAlgoInfo zuAlgoInfo;
    float fstop;
    int32_t iso;
    float lux;
    int64_t exposureTime;
    Span<std::pair<std::string_view, int64_t>> timeInfo;
};

struct FlatRecord {
    Span<std::string_view> errorInfo;
    bool hasError;
    timespec createTime;
    timespec requestTime;
    FlatFrameInfo frameInfo;
    FlatSnapshotInfo snapshotInfo;
    int64_t reserved64;
};

namespace flat {

template <>
inline constexpr size_t kMemberCount<FlatFrameInfo> = 5;
template <>
inline constexpr size_t kMemberCount<FlatRequestInfo> = 7;
template <>
inline constexpr size_t kMemberCount<FlatZuAlgoInfo> = 5;
template <>
inline constexpr size_t kMemberCount<FlatSnapshotInfo> = 13;
template <>
inline constexpr size_t kMemberCount<FlatRecord> = 7;

}  // namespace flat

// Hold a capture with all stages and eight nodes, whose names may have 30 characters, without an
// allocation. Both lie on the stack of the thread that flushes: 7 KiB of the 1 MiB that a thread
// has unless its maker chose otherwise.
using RecordCopy = FlatCopy<FlatRecord, 4096>;
using AlgorithmCopy = FlatCopy<FlatZuAlgoInfo, 2560>;
static_assert(sizeof(RecordCopy) + sizeof(AlgorithmCopy) <= 7168);

}  // namespace camInfosync
