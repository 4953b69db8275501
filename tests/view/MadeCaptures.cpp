#include "MadeCaptures.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include "Capture.h"
#include "Finding.h"
#include "View.h"

namespace view {
namespace {

constexpr int64_t kMs = 1'000'000;
constexpr int64_t kStart = 120'455'000 * kMs;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr const char* kStages[] = {"1request_to_zuhal",     "2request_to_vendor",
                                   "3result_from_vendor",   "4result_to_fwk",
                                   "5request_to_post",      "6request_to_algo",
                                   "7anchor_time",          "8getbuffer_from_fwk",
                                   "9mock_config_from_fwk", "10mock_request_from_fwk",
                                   "11mock_result_to_fwk",  "12post_proc_time"};
constexpr const char* kNodes[] = {"demosaic", "denoise", "mfnr",   "fusion",
                                  "beauty",   "sharpen", "jpeg-q", "thumbnail"};

// The same numbers with every standard library.
class Dice {
  public:
    explicit Dice(uint64_t seed) : mEngine(static_cast<uint32_t>(seed * 2654435761U + 17)) {}
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(mEngine()) % limit; }
    bool oneIn(uint32_t chances) { return below(chances) == 0; }

  private:
    std::mt19937 mEngine;
};

void addCall(Capture& capture, const char* operation, const char* thread, int32_t tid, int64_t at) {
    // No real clock stands at whole milliseconds.
    at += static_cast<int64_t>(at / kMs * 7919 % kMs);
    const Place place{0, capture.number * 34 + capture.calls.size() - 33};
    capture.calls.push_back({operation, thread, tid, at, place, true});
}

void addNodes(Capture& capture, int64_t start) {
    for (size_t i = 0; i < std::size(kNodes); ++i) {
        const bool isLong = capture.number % 500 == 7 && i == 3;
        const int64_t begin = start + (60 + static_cast<int64_t>(i) * 30) * kMs;
        const int64_t ms = isLong ? 430 : 12 + static_cast<int64_t>((capture.number + i * 5) % 20);
        addCall(capture, "updateNodeProcTime", i % 2 == 0 ? "algo-0" : "algo-1",
                i % 2 == 0 ? 4711 : 4712, begin + ms * kMs);
        Node node;
        node.name = kNodes[i];
        node.start = static_cast<double>(begin) / kMs + 0.512;
        node.second = *node.start + 1.253;
        node.completion = *node.start + static_cast<double>(ms) + 0.217;
        node.state = "OK";
        node.isListed = true;
        node.place = capture.calls.back().place;
        capture.nodes.push_back(node);
        addCall(capture, "updateNodeProcState", i % 2 == 0 ? "algo-0" : "algo-1",
                i % 2 == 0 ? 4711 : 4712, begin + ms * kMs + 100'000);
    }
}

void addStages(Capture& capture, int64_t start) {
    capture.stages.emplace();
    for (uint32_t i = 0; i < std::size(kStages); ++i) {
        const int64_t ms = i == 0 ? -1 : i == 7 || i == 11 ? 0 : static_cast<int64_t>(i) * 24;
        capture.stages->push_back({i, kStages[i], ms});
        addCall(capture, "updateSnapshotTimeInfo", "request", 4700,
                start + static_cast<int64_t>(i) * 24 * kMs);
    }
}

void addValues(Capture& capture) {
    using Group = Value::Group;
    capture.values = {
            {Group::kFrame, "frameNumber", std::to_string(900 + capture.number), true},
            {Group::kFrame, "timestamp", "120455000000000", false},
            {Group::kRequest, "reqValueA", "8", true},
            {Group::kRequest, "reqFlag", "true", true},
            {Group::kUserInterface, "camMode", capture.number % 3 == 0 ? "7" : "1", true},
            {Group::kUserInterface, "zoomRatio", "1.25", true},
            {Group::kUserInterface, "uiExtra", "burst", false},
            {Group::kAutomatics, "iso", "125", true},
            {Group::kAutomatics, "lux", "312.5", true},
    };
}

void fail(Capture& capture) {
    const Call& call = capture.calls[20];
    capture.findings.push_back({FindingKind::kVendorError, "vendor result 41: error_buffer", "41",
                                call.place, call.at});
}

void addCallWithoutEffect(Capture& capture) {
    capture.calls[22].hadEffect = false;
    capture.findings.push_back({FindingKind::kStageOutOfRange, "stage 15 is above 14",
                                "updateSnapshotTimeInfo", capture.calls[22].place,
                                capture.calls[22].at});
}

constexpr const char* kHostileNames[] = {
        "</script><script>window.broken=1</script>",
        "<img src=x onerror=\"window.broken=1\">",
        "\"'`${window.broken=1}\\",
        "line\u2028separators\u2029",
        "\u202egnp.eman\u202c and \u2066isolated\u2069",
        "\x1b[31mred\a\n\t",
        "\xff\xc3\xed\xa0\x80 no UTF-8",
        "<!--<script>",
        "]]>&lt;&amp;",
        "",
        "ü€𝄞 \u0301\u0301\u0301",
        "__proto__",
};

std::string hostileName(Dice& dice) {
    return kHostileNames[dice.below(std::size(kHostileNames))];
}

int64_t hostileTime(Dice& dice) {
    constexpr int64_t kTimes[] = {0,
                                  kStart,
                                  kStart + 1,
                                  kStart - 90'000 * kMs,
                                  kStart + 90'000'000 * kMs,
                                  std::numeric_limits<int64_t>::max(),
                                  std::numeric_limits<int64_t>::min(),
                                  -1};
    return dice.oneIn(3) ? kTimes[dice.below(std::size(kTimes))]
                         : kStart + static_cast<int64_t>(dice.below(200)) * kMs / 2;
}

double hostileMs(Dice& dice) {
    const double kTimes[] = {kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN(),
                             1e308,     -1e308,     9.2e12,
                             -1,        0,          5e-324};
    return dice.oneIn(4) ? kTimes[dice.below(std::size(kTimes))]
                         : static_cast<double>(kStart) / kMs + dice.below(120) - 10 +
                                   dice.below(4) * 0.25;
}

void addHostileNodes(Capture& capture, Dice& dice) {
    const uint32_t number = dice.below(8);
    for (uint32_t i = 0; i < number; ++i) {
        Node node;
        node.name = hostileName(dice) + std::to_string(i);
        node.start = hostileMs(dice);
        node.second = dice.oneIn(4) ? -1 : hostileMs(dice);
        node.completion = dice.oneIn(4) ? std::nullopt : std::optional(hostileMs(dice));
        node.state = dice.oneIn(3) ? hostileName(dice) : "OK";
        node.isListed = dice.oneIn(2);
        capture.nodes.push_back(node);
    }
}

void addHostileCalls(Capture& capture, Dice& dice) {
    const uint32_t number = dice.below(20);
    for (uint32_t i = 0; i < number; ++i) {
        const Time at = dice.oneIn(8) ? std::nullopt : Time(hostileTime(dice));
        capture.calls.push_back({hostileName(dice),
                                 hostileName(dice),
                                 static_cast<int32_t>(dice.below(3)) - 1,
                                 at,
                                 {dice.below(3), dice.below(50)},
                                 !dice.oneIn(5)});
    }
}

void addHostileFindings(Capture& capture, Dice& dice) {
    const uint32_t number = dice.below(5);
    for (uint32_t i = 0; i < number; ++i) {
        const auto kind =
                static_cast<FindingKind>(dice.below(static_cast<uint32_t>(FindingKind::kGap) + 1));
        const Time at = dice.oneIn(3) ? std::nullopt : Time(hostileTime(dice));
        capture.findings.push_back(
                {kind, hostileName(dice), hostileName(dice), {dice.below(3), dice.below(50)}, at});
    }
}

void addHostileTexts(Capture& capture, Dice& dice) {
    capture.process = hostileName(dice);
    capture.cameras = {{0, std::numeric_limits<uint32_t>::max()}};
    capture.algorithms = {{hostileName(dice), hostileName(dice)}};
    capture.results = {{{-1, hostileName(dice), {}}}};
    capture.values = {{Value::Group::kUserInterface, "camMode", hostileName(dice), false},
                      {Value::Group::kFrame, hostileName(dice), hostileName(dice), false}};
    capture.stages = {{{1, hostileName(dice), static_cast<int64_t>(dice.below(100))},
                       {2, "far", std::numeric_limits<int64_t>::max()},
                       {8, hostileName(dice), static_cast<int64_t>(dice.below(100))}}};
    Report report;
    report.at = hostileTime(dice);
    report.parameters = {{hostileName(dice), hostileName(dice)}};
    report.events = {{hostileName(dice), true}, {"", false}};
    report.closing = {{1022, 10000}};
    capture.reports = {report};
}

}  // namespace

Capture completeCapture() {
    constexpr int64_t kBegin = 5000 * kMs;
    Capture capture;
    capture.number = 3;
    capture.name = "IMG</script>";
    capture.process = "hal";
    capture.isRegistered = capture.isFlushed = true;
    capture.registered = kBegin;
    capture.flushed = kBegin + 100 * kMs + 7000;
    capture.removed = kBegin + 110 * kMs;
    capture.cameras = {{0, 3}};
    capture.algorithms = {{"mfnr", "fusion"}};
    capture.stages = {{{0, "1request_to_zuhal", -1},
                       {1, "2request_to_vendor", 5},
                       {2, "3result_from_vendor", -1}}};
    capture.results = {{{40, "error_none", {0, 5}}, {41, "", {}}}};
    capture.values = {{Value::Group::kFrame, "frameNumber", "900", true},
                      {Value::Group::kRequest, "reqFlag", "true", false},
                      {Value::Group::kUserInterface, "camMode", "7", true},
                      {Value::Group::kAutomatics, "iso", "125", true}};
    Node node;
    node.name = "mfnr";
    node.start = 5010;
    node.second = 5012.25;
    node.completion = 5040.5;
    node.state = "NodeProcessError";
    node.isListed = true;
    node.place = {0, 7};
    Node endless = node;
    endless.name = "fusion";
    endless.start = 5050;
    endless.second = -1;
    endless.completion = kInfinity;
    endless.state = "";
    endless.isListed = false;
    capture.nodes = {node, endless};
    capture.reports = {{capture.flushed, {0, 10}, {{"iso", "125"}, {"lux", "3.5"}}, {}, {}},
                       {kBegin + 105 * kMs, {}, {}, {{"cut", true}}, {{1022, 10000}}}};
    capture.calls = {{"updateUIInfo", "algo", 9, kBegin + 20 * kMs, {1, 8}, false},
                     {"updateFrameInfo", "", 0, std::nullopt, {}, true},
                     {"late", "", 10, kBegin + 60 * kMs, {}, true},
                     {"early", "cam", 10, kBegin + 10 * kMs, {}, true},
                     {"byHand", "hand", 0, kBegin + 15 * kMs, {}, true},
                     {"byOther", "other", 0, kBegin + 16 * kMs, {}, true},
                     {"farAway", "far", 0, kBegin + 200'000'000 * kMs, {}, true}};
    capture.findings = {
            {FindingKind::kNodeError, "node error", "mfnr", {0, 9}, kBegin + 50 * kMs},
            {FindingKind::kLate, "too late", "updateUIInfo", {1, 8}, kBegin + 20 * kMs, 3},
            {FindingKind::kCutEvent, "cut", "", {}, {}}};
    return capture;
}

Capture nodesOnlyCapture() {
    Capture capture;
    capture.number = 4;
    capture.name = "nodes only";
    capture.nodes = completeCapture().nodes;
    return capture;
}

Capture ordinaryCapture(uint64_t number) {
    const int64_t start = kStart + static_cast<int64_t>(number) * 35 * kMs;
    Capture capture;
    capture.number = number;
    capture.name = "BURST_20261121_101500_" + std::to_string(number);
    capture.isRegistered = capture.isFlushed = capture.isRemoved = true;
    capture.registered = start;
    capture.flushed = start + 330 * kMs;
    capture.removed = start + 335 * kMs;
    capture.cameras = {{0, 3}};
    capture.algorithms = {{"mfnr", "fusion", "beauty"}};
    capture.results = {{{40, "error_none", {}}, {41, "error_none", {}}}};
    addCall(capture, "registerSnapshotRequestRecord", "request", 4700, start);
    for (const char* operation : {"updateFrameInfo", "updateUIInfo", "updateRequestInfo"}) {
        addCall(capture, operation, "request", 4700, start + kMs);
    }
    addStages(capture, start);
    addNodes(capture, start);
    addCall(capture, "snapshotRequestInfoFlush", "", 4690, *capture.flushed);
    addCall(capture, "unregisterSnapshotRequestRecord", "", 4690, *capture.removed);
    addValues(capture);
    Report report;
    report.at = capture.flushed;
    report.parameters = {{"iso", "125"}, {"lux", "312.500000"}, {"cam_mode", "7"}};
    report.events.resize(17);
    report.closing = {{1022, 10000}};
    capture.reports = {report};
    if (number % 50 == 0) {
        fail(capture);
    }
    if (number % 50 == 0 || number % 70 == 0) {
        addCallWithoutEffect(capture);
    }
    return capture;
}

Capture hostileCapture(uint64_t number) {
    Dice dice(number);
    Capture capture;
    capture.number = number;
    capture.name = number == 2 ? std::string(1 << 20, 'N') : hostileName(dice);
    capture.isRegistered = !dice.oneIn(10);
    capture.isFlushed = !dice.oneIn(4);
    capture.isRemoved = !dice.oneIn(4);
    if (!dice.oneIn(4)) {
        capture.registered = hostileTime(dice);
        capture.flushed = capture.isFlushed ? Time(hostileTime(dice)) : std::nullopt;
        capture.removed = capture.isRemoved ? Time(hostileTime(dice)) : std::nullopt;
        addHostileCalls(capture, dice);
        addHostileFindings(capture, dice);
    }
    if (!dice.oneIn(5)) {
        addHostileNodes(capture, dice);
    }
    if (dice.oneIn(2)) {
        addHostileTexts(capture, dice);
    }
    return capture;
}

Session madeSession(bool isHostile) {
    Session session;
    session.clock = Clock::kMonotonic;
    session.calls = 12;
    session.toReal = 1'780'000'000'000 * kMs;
    session.sources = {"made.jsonl", "folder/second.jsonl", "third.jsonl"};
    if (!isHostile) {
        session.switches["collection"] = "on";
        session.notes = {"the log's end is missing"};
        session.findings = {
                {FindingKind::kUnknownName, "no capture \"X\"", "updateUIInfo", {1, 4}, {}, 7},
                {FindingKind::kVendorError, "vendor error", "", {2, 6}, {}}};
        return session;
    }
    for (const char* name : kHostileNames) {
        session.sources.emplace_back(name);
        session.notes.emplace_back(name);
        session.switches[name] = name;
        session.findings.push_back({FindingKind::kUnknownName, name, name, {3, 5}, {}});
    }
    session.toReal = std::numeric_limits<int64_t>::max();
    return session;
}

}  // namespace view
