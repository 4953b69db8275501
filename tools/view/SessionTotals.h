// Sums up a session.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Capture.h"
#include "TerminalStyle.h"
#include "View.h"

namespace view {

// Counts captures; keeps only the names that it is to show.
class SessionTotals {
  public:
    void add(const Capture& capture);

    // "8 captures, 1 failed, 3 calls without effect", and failures that are of no known capture
    std::string line(const Session& session) const;
    std::string text(const Session& session) const;

  private:
    // The first names, in the order in which the captures came.
    struct Names {
        uint64_t count = 0;
        std::vector<std::string> first;

        void add(const std::string& name, const std::string& more);
        std::string text() const;
    };

    uint64_t mCaptures = 0;
    uint64_t mNoEffects = 0;
    Names mFailed;
    Names mLeft;
};

}  // namespace view
