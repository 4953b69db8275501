// The column by whose values captures and nodes are grouped.

#pragma once

#include <string>

#include "Row.h"

namespace stats {

class GroupColumn {
  public:
    static constexpr int kNone = -1;

    // Of captures.ndjson, nodes.ndjson or both. Throws std::runtime_error with a text for the user
    // if there is none of that name.
    explicit GroupColumn(const std::string& name);

    // Whether rows of captures, and of nodes, have it.
    bool isOfCaptures() const { return mOfCaptures != kNone; }
    bool isOfNodes() const { return mOfNodes != kNone; }

    // The row's value as a text; "(not known)" if it has none. The row must have the column.
    std::string valueOf(const rows::CaptureRow& row) const;
    std::string valueOf(const rows::NodeRow& row) const;

  private:
    int mOfCaptures;  // its position among the columns
    int mOfNodes;
};

}  // namespace stats
