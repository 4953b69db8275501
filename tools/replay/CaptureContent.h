// What a record holds, as a capture.

#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "Capture.h"
#include "Finding.h"
#include "RequestRecord.h"

namespace replay {

// Where, and when, something was told.
struct Origin {
    view::Place place;
    view::Time at;
};

// Which values of a record somebody has told.
struct ToldValues {
    bool frame = false;
    bool request = false;
    bool anchorFrame = false;
    bool userInterface = false;
    bool automatics = false;
};

// What the desk's clock has written into a record, which nobody shall see.
struct DeskTimes {
    bool created = true;
    bool requested = true;
    std::set<std::string> stages;
};

// The stages that a record has, by number.
std::vector<view::Stage> stagesOf(const camInfosync::RequestRecord& record, const DeskTimes& times);

// The record's values that were told.
std::vector<view::Value> valuesOf(const camInfosync::RequestRecord& record, const ToldValues& told);

// The nodes that the record knows, and where each one's times were told.
std::vector<view::Node> nodesOf(const camInfosync::RequestRecord& record,
                                const std::map<std::string, Origin>& told);

// The results that the record has or expects, and where each one was told.
std::vector<view::VendorResult> resultsOf(const camInfosync::RequestRecord& record,
                                          const std::map<int32_t, Origin>& told);

}  // namespace replay
