#include "Statistics.h"

#include <string>

#include "Figures.h"
#include "GroupColumn.h"
#include "Row.h"

namespace stats {

Statistics::Statistics(const std::string& by) : mBy(by) {
    if (!by.empty()) {
        mColumn.emplace(by);
    }
}

void Statistics::add(const rows::CaptureRow& row) {
    const bool isGrouped = mColumn && mColumn->isOfCaptures();
    Figures* group = isGrouped ? &mGroups.of(mColumn->valueOf(row)) : nullptr;
    mAll.add(row);
    if (group != nullptr) {
        group->add(row);
    }
    mSlowest.add(row);
    mRegistrations.add(row, mAll, group);
}

void Statistics::add(const rows::NodeRow& row) {
    mAll.add(row);
    if (mColumn && mColumn->isOfNodes()) {
        mGroups.of(mColumn->valueOf(row)).add(row);
    }
}

}  // namespace stats
