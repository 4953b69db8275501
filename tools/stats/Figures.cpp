#include "Figures.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <tuple>

#include "Histogram.h"
#include "Row.h"

namespace stats {
namespace {

void addIfKnown(Histogram& histogram, const rows::Duration& duration) {
    if (duration) {
        histogram.add(*duration);
    }
}

bool isSome(const rows::Whole& count) {
    return count.value_or(0) > 0;
}

// In the order of kFailures. A row does not tell that a capture was never flushed from that it was
// not seen to be, unless it says that it has failed.
std::array<bool, kFailures.size()> failuresOf(const rows::CaptureRow& row) {
    return {isSome(row.vendorErrors),
            isSome(row.nodeTimeOuts),
            isSome(row.nodeErrors),
            isSome(row.errorTexts),
            isSome(row.resultsMissing),
            isSome(row.noCompletions),
            row.hasFailed.value_or(false) && !row.isFlushed.value_or(true)};
}

}  // namespace

void NodeFigures::add(const rows::NodeRow& row) {
    ++nodes;
    failed += row.hasFailed.value_or(false) ? 1 : 0;
    timeOuts += row.timedOut.value_or(false) ? 1 : 0;
    addIfKnown(took, row.took);
}

void Figures::add(const rows::CaptureRow& row) {
    ++captures;
    failed += row.hasFailed.value_or(false) ? 1 : 0;
    withoutEffect += isSome(row.callsWithoutEffect) ? 1 : 0;
    const auto kinds = failuresOf(row);
    for (size_t i = 0; i < kinds.size(); ++i) {
        failures[i] += kinds[i] ? 1 : 0;
    }
    addIfKnown(shotToShot, row.shotToShot);
    addIfKnown(toFlush, row.toFlush);
    for (size_t i = 0; i < stages.size(); ++i) {
        addIfKnown(stages[i], row.stages[i]);
    }
}

void Figures::add(const rows::NodeRow& row) {
    nodes.of(row.node).add(row);
    everyNode.add(row);
}

bool SlowCapture::operator<(const SlowCapture& other) const {
    return std::tie(other.toFlush, name, runId, captureSeq) <
           std::tie(toFlush, other.name, other.runId, other.captureSeq);
}

void SlowestCaptures::add(const rows::CaptureRow& row) {
    if (!row.toFlush ||
        (mCaptures.size() == kMost && *row.toFlush < std::prev(mCaptures.end())->toFlush)) {
        return;
    }
    mCaptures.insert({*row.toFlush, row.name.value_or(""), row.runId, row.captureSeq,
                      row.slowestNode, row.slowestNodeTook, row.hasFailed.value_or(false)});
    if (mCaptures.size() > kMost) {
        mCaptures.erase(std::prev(mCaptures.end()));
    }
}

}  // namespace stats
