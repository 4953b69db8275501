// One capture, from its registration to its removal.

#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Finding.h"

namespace view {

// Something that the record holds, by its name there.
struct Value {
    enum class Group { kFrame, kRequest, kUserInterface, kAutomatics };

    Group group;
    std::string name;
    std::string text;
    bool isNumber = false;  // `text` is a JSON number
};

struct Stage {
    uint32_t number;  // 0 to 14
    std::string name;
    int64_t ms;           // since the record was created; -1 for stage 0, which has no time
    bool isKnown = true;  // `ms` is what was measured, and not -1 in its place

    // Whether `ms` is a point of time: stage 6 is a difference, and 7 and 11 are usually constants.
    bool isInstant() const;
};

// A node of the algorithms. Its times are in the nodes' own unit, which is taken for milliseconds.
struct Node {
    std::string name;
    std::optional<double> start;   // a node that is only listed starts at 0
    std::optional<double> second;  // -1: it timed out
    std::optional<double> completion;
    std::string state;  // "none" of one that is listed and has told nothing; empty: not known
    bool isListed = false;
    Place place;  // where its times were told

    bool isTimedOut() const { return second && *second == -1.0; }
    bool hasRun() const { return completion || (start && *start != 0.0); }
    // Milliseconds; also negative, never infinite. Absent without two finite times.
    std::optional<double> duration() const {
        const double ms = start && completion ? *completion - *start : std::nan("");
        return std::isfinite(ms) ? std::optional<double>(ms) : std::nullopt;
    }
};

struct VendorResult {
    int32_t id;
    std::string text;
    Place place;  // where it was told; line 0 if it never came
};

// A call, or where the source knows no calls, a line about one.
struct Call {
    std::string operation;
    std::string thread;  // its name; empty: the main thread or not known
    int32_t tid = 0;     // 0: not known
    Time at;
    Place place;
    bool hadEffect = true;
};

// What the service received, once.
struct Report {
    struct Event {
        std::string text;
        bool isCut = false;
    };

    Time at;
    Place place;
    std::vector<std::pair<std::string, std::string>> parameters;  // empty: not known
    std::vector<Event> events;
    std::optional<std::pair<int32_t, int32_t>> closing;
};

struct Capture {
    uint64_t number = 0;  // from 1, in the order of registration
    std::string name;
    std::string process;  // its name or number; empty: not known

    Time registered;
    Time flushed;  // the first time
    Time removed;
    bool isRegistered = false;  // false: its beginning is not in the source
    bool isFlushed = false;
    bool isRemoved = false;

    // Absent where the source cannot tell:
    std::optional<std::vector<uint32_t>> cameras;
    std::optional<std::vector<std::string>> algorithms;  // the list, as it was given
    std::optional<std::vector<Stage>> stages;            // by number
    std::optional<std::vector<VendorResult>> results;
    std::vector<Value> values;
    std::vector<Node> nodes;  // by start, then by name
    std::vector<Report> reports;
    std::vector<Call> calls;        // in the order of the source
    std::vector<Finding> findings;  // in the order of the source

    bool hasFailed() const;
    // From the registration to the first flush, in milliseconds.
    std::optional<double> duration() const;
    // The node with the longest duration; null if none has one.
    const Node* slowestNode() const;
    // The value of that name; null if it is not known.
    const Value* find(const char* value) const;
};

}  // namespace view
