// What an update makes of the values that it finds in a record.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "RequestRecord.h"

namespace camInfosync {

// Stores a frame's description. Cameras are appended to those already there. The timestamp and the
// first cameras are exchanged with the arguments, so that what was there dies with them.
void storeFrame(FrameInfo& frame, uint32_t frameNumber, std::string& timestamp,
                std::vector<uint32_t>& camIds, uint32_t frameExtra, const std::string& imageName);

// Stores the three times of a node. `node` is moved from.
void storeNodeTimes(SnapshotInfo::ZuAlgoInfo& algo, std::string& node, double first, double second,
                    double third);

// Replaces the list of algorithms, and leaves the old one in `algoList`. The key of an entry is
// what precedes its first ':'; a key that is new gets its starting values.
void replaceAlgoList(SnapshotInfo::ZuAlgoInfo& algo, std::vector<std::string>& algoList);

// Stores the text of one vendor result. While there are fewer results than expected ids, first
// marks all of those ids as not returned.
void storeVendorResult(SnapshotInfo& snapshot, int32_t resultId, const char* text);

}  // namespace camInfosync
