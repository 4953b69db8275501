// What a report tells of a record.

#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace camInfosync {
struct RequestRecord;
}  // namespace camInfosync

namespace replay {

// Which update tells a value.
enum class Teller {
    kFrame,
    kUserInterface,
    kAutomatics,
    kNode,
    kAllNodes,  // takes nodes away as well
};

// Each value as the report writes it, by who tells it and its name: "iso", or of a node "start of
// NODE" and "completion of NODE".
struct ReportedValue {
    std::string node;  // of a node
    std::string text;
};
using ReportedValues = std::map<std::pair<Teller, std::string>, ReportedValue>;

ReportedValues reportedValues(const camInfosync::RequestRecord& record);

// A value that was reported otherwise, or that was or is none; kAllNodes has told the latter.
struct LateValue {
    Teller teller;
    std::string node;
    std::string text;  // for the user
};
std::vector<LateValue> lateValues(const ReportedValues& reported, const ReportedValues& now);

}  // namespace replay
