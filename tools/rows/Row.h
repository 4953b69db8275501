// Captures as rows of flat tables, for engines and for programs that compare and count.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace rows {

// Of what stands below. It changes when a column's name, type or meaning changes or a column goes;
// a column that is added does not change it, since readers ignore what they do not know.
inline constexpr int64_t kSchemaVersion = 1;

// The files of a folder of rows. The run's is put in place last and says that the others are whole.
inline constexpr char kCapturesFile[] = "captures.ndjson";
inline constexpr char kNodesFile[] = "nodes.ndjson";
inline constexpr char kRunFile[] = "run.ndjson";

// A whole number that JSON has as a string, since many readers keep 53 bits of a number only.
template <typename Integer>
struct InText {
    Integer value;
};
using Nanoseconds = InText<int64_t>;  // since 1970, UTC

using Text = std::optional<std::string>;
using Number = std::optional<double>;     // finite
using Whole = std::optional<int64_t>;     // within 53 bits, as JSON numbers are safe
using Duration = std::optional<int64_t>;  // microseconds, within 53 bits
using Flag = std::optional<bool>;

inline constexpr size_t kStages = 15;

// The tools write texts that are safe to show. Who reads a file does not know who wrote it, and
// makes them safe before showing them.
//
// What is optional is absent where it is not known. docs/fleet.md has the meaning of each column.
struct CaptureRow {
    std::string runId;
    int64_t captureSeq = 0;  // from 1, in the order of registration; unique in the run
    Text source;
    Whole line;
    Text device;
    Text build;
    Text process;
    Text name;
    std::optional<Nanoseconds> registered;
    std::optional<Nanoseconds> flushed;
    std::optional<Nanoseconds> removed;
    Duration registeredAt;  // on the run's own clock, whichever that is
    Duration toFlush;
    Flag isFlushed;
    Flag isRemoved;
    Flag hasFailed;
    Whole findings;
    Whole calls;
    Whole callsWithoutEffect;
    Whole vendorErrors;
    Whole nodeTimeOuts;
    Whole nodeErrors;
    Whole errorTexts;
    Whole resultsMissing;
    Whole noCompletions;
    Text firstFinding;
    Whole reports;
    Whole frameNumber;
    Text timestamp;
    Whole frameExtra;
    Text cameras;
    Whole camId;
    Whole requestType;
    Whole camMode;
    Whole faceDetect;
    Number zoomRatio;
    Text uiExtra;
    Whole reqValueA;
    Whole reqValueB;
    Whole anchorFrame;
    Flag reqFlag;
    std::optional<InText<uint64_t>> reqValue64;
    Text reqIdsA;
    Text expectedResultIds;
    Number fstop;
    Whole iso;
    Number lux;
    std::optional<InText<int64_t>> exposureTime;
    Text algorithms;
    Text results;
    Text errors;
    Text stagesTold;  // numbers of the stages that were told, with or without a time
    std::array<Duration, kStages> stages;
    Duration shotToShot;
    Whole nodeCount;
    Text slowestNode;
    Duration slowestNodeTook;
};

struct NodeRow {
    std::string runId;
    int64_t captureSeq = 0;
    Text device;
    Text build;
    Whole camMode;
    Text name;                              // of the capture
    std::optional<Nanoseconds> registered;  // the capture
    std::string node;
    Flag isListed;
    Duration start;
    Duration second;  // absent if it timed out
    Duration completion;
    Duration took;
    Flag timedOut;
    Flag hasFailed;
    Text state;
};

struct RunRow {
    std::string runId;
    Text source;
    Text device;
    Text build;
    Text clock;  // "none", "monotonic" or "real"
    Whole captures;
    Whole nodes;
    Whole calls;
    Whole findings;                               // that belong to no capture
    std::map<std::string, std::string> switches;  // by what follows "switch_" in the column's name
};

}  // namespace rows
