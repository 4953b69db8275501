// Compares two sides and counts what comes of it.

#pragma once

#include <vector>

#include "Captured.h"
#include "Compare.h"
#include "Difference.h"
#include "Pairing.h"
#include "Report.h"
#include "Tolerance.h"

namespace diff {

class Differ : public PairVisitor {
  public:
    Differ(const Tolerance& tolerance, Report& report) : mTolerance(tolerance), mReport(report) {}

    // Throws std::runtime_error with a sentence for the user if a side cannot be read.
    void compare(CaptureReader& a, CaptureReader& b, By by);

    void pair(const Captured& a, const Captured& b) override;
    void single(const Captured& capture, bool isOfA) override;

    const Counts& counts() const { return mCounts; }

  private:
    void addAll(const std::vector<Difference>& differences, const Where& where);

    const Tolerance mTolerance;
    Report& mReport;
    Counts mCounts;
};

}  // namespace diff
