// Sums up a played log.

#pragma once

#include <cstdint>
#include <string>

namespace camInfosync {
class InfoSynchronizerManager;
}  // namespace camInfosync

namespace replay {

struct Totals {
    std::string answer;  // of the service, to whether snapshots are collected
    uint64_t calls = 0;
    uint64_t flushes = 0;
    uint64_t reports = 0;
    uint64_t serviceCalls = 0;
};

// The totals in a readable form, with what the library holds now.
std::string readableTotals(const Totals& totals, camInfosync::InfoSynchronizerManager& manager);

}  // namespace replay
