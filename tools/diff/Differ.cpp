#include "Differ.h"

#include <cstdint>
#include <vector>

#include "Captured.h"
#include "Compare.h"
#include "Difference.h"
#include "Pairing.h"
#include "Report.h"

namespace diff {

void Differ::compare(CaptureReader& a, CaptureReader& b, By by) {
    pairCaptures(a, b, by, *this);
    const std::vector<Difference> found = compareSessions(a.session(), b.session());
    mCounts.ofSession = found.size();
    addAll(found, {});
}

void Differ::pair(const Captured& a, const Captured& b) {
    const std::vector<Difference> found = compareCaptures(a, b, mTolerance);
    mCounts.pairs += 1;
    mCounts.differing += found.empty() ? 0 : 1;
    addAll(found, {a.name(), b.name(), a.row.captureSeq, b.row.captureSeq});
}

void Differ::single(const Captured& capture, bool isOfA) {
    constexpr char kThere[] = "is there";
    Difference difference{Kind::kCapture, "capture", {}, {}, {}, {}};
    (isOfA ? difference.a : difference.b) = kThere;
    (isOfA ? mCounts.onlyInA : mCounts.onlyInB) += 1;
    const int64_t number = capture.row.captureSeq;
    addAll({difference}, {capture.name(), {}, isOfA ? number : 0, isOfA ? 0 : number});
}

void Differ::addAll(const std::vector<Difference>& differences, const Where& where) {
    for (const Difference& difference : differences) {
        mReport.add(difference, where);
    }
}

}  // namespace diff
