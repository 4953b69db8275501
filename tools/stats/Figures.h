// What is counted of a number of captures.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "Bounded.h"
#include "Finding.h"
#include "Histogram.h"
#include "Row.h"

namespace stats {

// Why captures fail.
inline constexpr std::array kFailures = {
        view::FindingKind::kVendorError,   view::FindingKind::kNodeTimeOut,
        view::FindingKind::kNodeError,     view::FindingKind::kErrorText,
        view::FindingKind::kResultMissing, view::FindingKind::kNoCompletion,
        view::FindingKind::kNeverFlushed,
};

// Of all nodes of one name, or of one group. All times are microseconds.
struct NodeFigures {
    uint64_t nodes = 0;  // that captures listed or ran
    uint64_t failed = 0;
    uint64_t timeOuts = 0;
    Histogram took;  // those that told a beginning and an end, also if they timed out

    void add(const rows::NodeRow& row);
};

struct Figures {
    static constexpr size_t kMostNodes = 100;  // with figures of their own

    uint64_t captures = 0;
    uint64_t failed = 0;
    std::array<uint64_t, kFailures.size()> failures{};  // captures; one may have several
    uint64_t withoutEffect = 0;                         // captures with a call that had none
    Histogram shotToShot;                               // as a stage tells it
    Histogram gaps;                                     // between registrations
    Histogram toFlush;
    std::array<Histogram, rows::kStages> stages;
    Bounded<NodeFigures> nodes{kMostNodes};
    NodeFigures everyNode;

    void add(const rows::CaptureRow& row);
    void add(const rows::NodeRow& row);

    bool hasStage() const { return shotToShot.count() != 0; }
    // The stage's times, or the gaps if there are none.
    const Histogram& shots() const { return hasStage() ? shotToShot : gaps; }
};

// A capture that took long from its registration to the first flush.
struct SlowCapture {
    int64_t toFlush;
    std::string name;
    std::string runId;
    int64_t captureSeq;
    rows::Text slowestNode;
    rows::Duration slowestNodeTook;
    bool hasFailed;

    // The slowest first.
    bool operator<(const SlowCapture& other) const;
};

class SlowestCaptures {
  public:
    static constexpr size_t kMost = 10;

    void add(const rows::CaptureRow& row);
    const std::set<SlowCapture>& captures() const { return mCaptures; }

  private:
    std::set<SlowCapture> mCaptures;
};

}  // namespace stats
