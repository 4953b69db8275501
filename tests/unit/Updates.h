// Every update with arguments of each kind.

#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "InfoSynchronizerManager.h"

namespace camInfosync {

// Longer than a string holds without an allocation.
inline const std::string kLong = "a text that is kept on the heap";

struct Update {
    const char* text;
    void (*run)(InfoSynchronizerManager& manager, const char* image);
};
// clang-format off
#define UPDATE(...) \
    {#__VA_ARGS__, [](InfoSynchronizerManager& manager, [[maybe_unused]] const char* image) { manager.__VA_ARGS__; }}
// clang-format on

// Those with lists hold short texts only: libc++ 14 leaks a vector if the copy of an element
// throws.
inline const Update updates[] = {
        UPDATE(updateFrameInfo(image, 7, kLong, {2, 1}, 9)),
        UPDATE(updateRequestInfo(image, -1, 2, true, UINT64_MAX, {3, 4}, {5})),
        UPDATE(updateUIInfo(image, static_cast<RequestType>(6), 4000000000U, -2, 2.5F, kLong)),
        UPDATE(updateAnchor3aInfo(image, 1.75F, 4, -0.5F, INT64_MIN)),
        UPDATE(updateAnchorFrame(image, -3)),
        UPDATE(updateVndResultInfo(image, UINT32_MAX, 0)),
        UPDATE(updateVndResultInfo(image, 2, 1)),
        UPDATE(updateVndResultInfo(image, 2, 2)),
        UPDATE(updateVndResultInfo(image, 2, 3)),
        UPDATE(updateVndResultInfo(image, 2, 4)),
        UPDATE(updateVndResultInfo(image, 2, 5)),
        UPDATE(updateVndResultInfo(image, 2, -1)),
        UPDATE(updateVndResultInfo(image, {{1, kLong}})),
        UPDATE(updateZuAlgoInfo(image, std::vector<std::string>{"x:1:2", "y", ":z", "y:3"})),
        UPDATE(updateZuAlgoInfo(image,
                                {{"n"}, {{kLong, 1}}, {{"b", 2}}, {{"c", 3}}, {{"d", "OK"}}})),
        UPDATE(updateSnapshotErrorInfo(image, kLong.c_str())),
        UPDATE(updateSnapshotErrorInfo(image, nullptr)),
        UPDATE(updateNodeProcTime(image, kLong, 10.5, 3.25, 13.75)),
        UPDATE(updateNodeProcTime(image, kLong, 10.5, -1.0, 13.75)),
        UPDATE(updateNodeProcTime(image, kLong, 10.5, -0.999999, 13.75)),
        UPDATE(updateNodeProcTime(image, kLong, 10.5, -1.5, 13.75)),
        UPDATE(updateNodeProcTime(image, kLong, 10.5, std::nan(""), 13.75)),
        UPDATE(updateNodeProcState(image, kLong, 0)),
        UPDATE(updateNodeProcState(image, kLong, 1)),
        UPDATE(updateNodeProcState(image, kLong, 2)),
        UPDATE(updateNodeProcState(image, kLong, 3)),
        UPDATE(updateNodeProcState(image, kLong, 4)),
        UPDATE(updateNodeProcState(image, kLong, 5)),
        UPDATE(updateNodeProcState(image, kLong, INT32_MIN)),
        UPDATE(updateNodeProcState(image, {{kLong, kLong}, {"o", "any"}})),
        UPDATE(updateSnapshotTimeInfo(image, {{"2request_to_vendor", 5}, {"no stage", 6}})),
        UPDATE(updateSnapshotTimeInfo(image, 0)),
        UPDATE(updatePostProcInfo({{kLong, 4000000000U}})),
};

}  // namespace camInfosync
