// Which capture of one side is compared with which of the other.

#pragma once

#include "Captured.h"

namespace diff {

enum class By {
    kName,   // the first of a name with the first of that name, the second with the second
    kOrder,  // the first with the first, in the order of registration
};

class PairVisitor {
  public:
    virtual ~PairVisitor() = default;
    virtual void pair(const Captured& a, const Captured& b) = 0;
    virtual void single(const Captured& capture, bool isOfA) = 0;
};

// Calls `visitor` for each pair, and then for each capture that is on one side only. Both sides are
// read at the same pace, and what waits for its other is kept in memory: nothing, if the sides have
// the same captures in the same order.
void pairCaptures(CaptureReader& a, CaptureReader& b, By by, PairVisitor& visitor);

}  // namespace diff
