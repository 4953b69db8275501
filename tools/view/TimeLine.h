// A capture's times, laid out for drawing.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Capture.h"
#include "Finding.h"

namespace view {

// Nanoseconds since the beginning of the time line.
struct Span {
    int64_t begin;
    int64_t end;  // not before `begin`
    std::string name;
    bool hasFailed = false;
    Place place;  // where it was told, of nodes and calls
};

// Its spans are in order and do not overlap; they may touch and be empty.
struct Lane {
    enum class Kind { kCapture, kStages, kNode, kThread };

    Kind kind;
    std::string name;  // the node's or the thread's
    int32_t tid = 0;   // of a thread
    std::vector<Span> spans;
};

struct Mark {
    int64_t at;
    std::string name;
    bool isFailure = false;
    Place place;
};

struct TimeLine {
    Time start;  // on the session's clock; absent if only the nodes have times
    int64_t length = 0;
    std::vector<Lane> lanes;  // the capture, the stages, nodes by start, threads by first call
    std::vector<Mark> marks;  // failures and flushes, by time
    // Nodes' times are no times of the session's clock: the first node begins with the time line.
    bool nodesStandApart = false;
    Time nodesStart;  // of those that stand apart: the first one's start, on the nodes' clock
};

// Nothing if neither the source nor a node has told a time. A lane without a span is left out.
//
// The capture is a span up to its first flush and one after it. A stage is a span from the stage
// before it in time, or from the registration, and a call an empty span.
//
// A node's times are on the session's clock if the first of them lies within a minute of the
// capture. A node without a completion, or with one before its start, is an empty span at its
// start. A node that has told nothing has no lane.
//
// Times that are not finite are left out, and such as lie more than a day from the registration
// (or what else is known first) and, of nodes that stand apart, from the first node's start.
std::optional<TimeLine> timeLineOf(const Capture& capture);

}  // namespace view
