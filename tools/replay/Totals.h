// Sums up a played log.

#pragma once

#include <cstdint>
#include <string>

namespace camInfosync {
class InfoSynchronizerManager;
}  // namespace camInfosync

namespace replay {

// What the service answers to whether snapshots are collected.
struct CollectionAnswer {
    std::string first;
    uint64_t changes = 0;  // how often it answered something else afterwards
};

struct Totals {
    CollectionAnswer answer;
    uint64_t calls = 0;
    uint64_t flushes = 0;
    uint64_t reports = 0;
    uint64_t serviceCalls = 0;
};

// The totals in a readable form, with what the library holds now.
std::string readableTotals(const Totals& totals, camInfosync::InfoSynchronizerManager& manager);

}  // namespace replay
