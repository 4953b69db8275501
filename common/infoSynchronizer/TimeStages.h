// The rules of a snapshot's time line: which keys the stages 1 to 14 write, and with what.

#pragma once

#include <time.h>

#include <cstdint>
#include <map>
#include <string>

namespace camInfosync {

// The number of time stages; the last one is one less.
constexpr uint32_t kTimeStages = 15;

// The text of a time stage below kTimeStages, ready to look up with. The texts are made on the
// first call and live until process exit: what was made after that call may use them to its end.
const std::string& stageKey(uint32_t stage);

// Milliseconds from `begin` to `end`, as a time line counts them.
int32_t intervalMs(const timespec& begin, const timespec& end);

// Stores what a time stage from 1 to the last stands for, `interval` milliseconds after the
// record's creation.
void storeStage(std::map<std::string, int64_t>& timeInfo, uint32_t stage, int32_t interval);

}  // namespace camInfosync
