// Counts captures and nodes, row by row.

#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "Bounded.h"
#include "Figures.h"
#include "GroupColumn.h"
#include "Registrations.h"
#include "Row.h"

namespace stats {

// Its memory does not grow with the rows. Rows of captures come run by run, otherwise in any order.
class Statistics {
  public:
    static constexpr size_t kMostGroups = 50;  // with figures of their own

    // `by` is the column to group by; empty: none. Throws std::runtime_error with a text for the
    // user if there is no such column.
    explicit Statistics(const std::string& by);
    Statistics(const Statistics&) = delete;
    Statistics& operator=(const Statistics&) = delete;

    void add(const rows::CaptureRow& row);
    void add(const rows::NodeRow& row);

    const Figures& all() const { return mAll; }
    const SlowestCaptures& slowest() const { return mSlowest; }

    // The column's name; empty: there are no groups.
    const std::string& by() const { return mBy; }
    const Bounded<Figures>& groups() const { return mGroups; }
    // Whether the groups have captures; otherwise they have nodes only.
    bool groupsCaptures() const { return mColumn && mColumn->isOfCaptures(); }
    bool groupsNodes() const { return mColumn && mColumn->isOfNodes(); }

  private:
    const std::string mBy;
    std::optional<GroupColumn> mColumn;
    Figures mAll;
    Bounded<Figures> mGroups{kMostGroups};
    SlowestCaptures mSlowest;
    Registrations mRegistrations;
};

}  // namespace stats
