#include "Registrations.h"

#include <cstdint>
#include <map>

#include "Figures.h"
#include "Row.h"

namespace stats {

void Registrations::count(std::map<int64_t, End>::iterator earlier,
                          std::map<int64_t, End>::iterator later, Figures& all) {
    ++earlier->second.neighbours;
    ++later->second.neighbours;
    if (earlier->second.process != later->second.process) {
        return;
    }
    const int64_t gap = later->second.at - earlier->second.at;
    all.gaps.add(gap);
    if (later->second.group != nullptr) {
        later->second.group->gaps.add(gap);
    }
}

void Registrations::add(const rows::CaptureRow& row, Figures& all, Figures* group) {
    constexpr int kBothNeighbours = 2;
    if (row.runId != mRunId) {
        mEnds.clear();
        mRunId = row.runId;
    }
    if (!row.registeredAt) {
        return;
    }
    const auto [own, isNew] =
            mEnds.insert({row.captureSeq, {*row.registeredAt, row.process.value_or(""), group, 0}});
    if (!isNew) {
        return;
    }
    const auto before = mEnds.find(row.captureSeq - 1);
    const auto after = mEnds.find(row.captureSeq + 1);
    if (before != mEnds.end()) {
        count(before, own, all);
    }
    if (after != mEnds.end()) {
        count(own, after, all);
    }
    for (const auto& end : {before, own, after}) {
        if (end != mEnds.end() && end->second.neighbours == kBothNeighbours) {
            mEnds.erase(end);
        }
    }
    if (mEnds.size() > kMost) {
        mEnds.erase(mEnds.begin());
    }
}

}  // namespace stats
