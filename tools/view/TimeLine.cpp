#include "TimeLine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Capture.h"
#include "Finding.h"

namespace view {
namespace {

constexpr int64_t kMs = 1'000'000;
constexpr int64_t kMinute = 60'000 * kMs;
constexpr int64_t kDay = 1'440 * kMinute;

bool areNear(int64_t one, int64_t other, int64_t limit) {
    const auto [least, most] = std::minmax(one, other);
    return static_cast<uint64_t>(most) - static_cast<uint64_t>(least) <=
           static_cast<uint64_t>(limit);
}

// A node's milliseconds as nanoseconds; nothing if they are no time that can be told.
Time fromMs(std::optional<double> ms) {
    const double nanoseconds = ms.value_or(std::nan("")) * static_cast<double>(kMs);
    constexpr double kLimit = 9.2e18;
    if (!(std::fabs(nanoseconds) < kLimit)) {
        return std::nullopt;
    }
    return std::llround(nanoseconds);
}

bool meansNodeFailure(FindingKind kind) {
    return kind == FindingKind::kNodeTimeOut || kind == FindingKind::kNodeError ||
           kind == FindingKind::kNoCompletion;
}

bool hasFailed(const Capture& capture, const Node& node) {
    return node.isTimedOut() ||
           std::any_of(capture.findings.begin(), capture.findings.end(), [&](const Finding& each) {
               return meansNodeFailure(each.kind) && each.subject == node.name;
           });
}

// The time of a stage, which is told as milliseconds since the registration.
Time timeOf(const Stage& stage, int64_t registered) {
    return stage.isInstant() && stage.ms <= kDay / kMs ? Time(registered + stage.ms * kMs)
                                                       : std::nullopt;
}

// All times of the session's clock, that of the registration first.
std::vector<int64_t> timesOf(const Capture& capture) {
    std::vector<int64_t> times;
    const auto take = [&](Time time) {
        if (time) {
            times.push_back(*time);
        }
    };
    take(capture.registered);
    take(capture.flushed);
    take(capture.removed);
    for (const Call& call : capture.calls) {
        take(call.at);
    }
    for (const Report& report : capture.reports) {
        take(report.at);
    }
    for (const Finding& finding : capture.findings) {
        take(finding.at);
    }
    return times;
}

// Lays out in nanoseconds of the session's clock, or of the nodes' own; then moves to the start.
class Layout {
  public:
    explicit Layout(const Capture& capture) : mCapture(capture) {}

    std::optional<TimeLine> make();

  private:
    struct Range {
        int64_t begin = std::numeric_limits<int64_t>::max();
        int64_t end = std::numeric_limits<int64_t>::min();

        void take(int64_t time) {
            begin = std::min(begin, time);
            end = std::max(end, time);
        }
        void take(const std::vector<Span>& spans) {
            for (const Span& span : spans) {
                take(span.begin);
                take(span.end);
            }
        }
        bool isEmpty() const { return begin > end; }
    };

    // The time if it can be drawn beside the others.
    Time usable(Time time) const {
        return time && mReference && areNear(*time, *mReference, kDay) ? time : std::nullopt;
    }
    void findRange();
    void addLane(Lane lane) {
        if (!lane.spans.empty()) {
            mLine.lanes.push_back(std::move(lane));
        }
    }
    void addCapture();
    void addStages();
    void placeNodes();
    void addNodes();
    std::optional<Span> spanOf(const Node& node) const;
    void addThreads();
    void addMarks();
    void addMark(Time at, const std::string& name, bool isFailure, const Place& place);
    void moveToStart();

    const Capture& mCapture;
    TimeLine mLine;
    Time mReference;       // that all others must be near
    Time mNodesReference;  // the same for nodes
    Range mSeen;           // what the source has told of the capture, without stages and nodes
};

// Deliberate: a reference within a year of the ends of the numbers is none, so that no time near it
// can overflow.
void Layout::findRange() {
    constexpr int64_t kLimit = 9'190'000'000'000'000'000;
    for (const int64_t time : timesOf(mCapture)) {
        if (!mReference && time > -kLimit && time < kLimit) {
            mReference = time;
        }
        if (usable(time)) {
            mSeen.take(time);
        }
    }
}

void Layout::addCapture() {
    if (mSeen.isEmpty()) {
        return;
    }
    const int64_t flushed = usable(mCapture.flushed).value_or(mSeen.end);
    Lane lane{Lane::Kind::kCapture, mCapture.name, 0, {}};
    lane.spans.push_back({mSeen.begin,
                          flushed,
                          mCapture.isFlushed ? "to the flush" : "not flushed",
                          mCapture.hasFailed(),
                          {}});
    if (flushed < mSeen.end) {
        lane.spans.push_back({flushed, mSeen.end, "after the flush", false, {}});
    }
    addLane(std::move(lane));
}

void Layout::addStages() {
    const Time registered = usable(mCapture.registered);
    if (!registered || !mCapture.stages) {
        return;
    }
    std::vector<std::pair<int64_t, const Stage*>> instants;
    for (const Stage& stage : *mCapture.stages) {
        if (const Time time = timeOf(stage, *registered)) {
            instants.emplace_back(*time, &stage);
        }
    }
    std::sort(instants.begin(), instants.end(), [](const auto& one, const auto& other) {
        return std::tie(one.first, one.second->number) <
               std::tie(other.first, other.second->number);
    });
    Lane lane{Lane::Kind::kStages, "stages", 0, {}};
    for (const auto& [time, stage] : instants) {
        const int64_t begin = lane.spans.empty() ? *registered : lane.spans.back().end;
        lane.spans.push_back({begin, time, stage->name, false, {}});
    }
    addLane(std::move(lane));
}

// Decides by the first of all nodes' times which clock they are on.
void Layout::placeNodes() {
    Time first;
    for (const Node& node : mCapture.nodes) {
        for (const Time& time : {fromMs(node.start), fromMs(node.completion)}) {
            if (time && node.hasRun() && (!first || *time < *first)) {
                first = time;
            }
        }
    }
    if (!first) {
        return;
    }
    const bool isOnClock = !mSeen.isEmpty() && (areNear(*first, mSeen.begin, kMinute) ||
                                                areNear(*first, mSeen.end, kMinute) ||
                                                (*first > mSeen.begin && *first < mSeen.end));
    mLine.nodesStandApart = !isOnClock;
    mNodesReference = isOnClock ? mReference : first;
}

std::optional<Span> Layout::spanOf(const Node& node) const {
    const auto near = [this](Time time) {
        return time && areNear(*time, *mNodesReference, kDay) ? time : std::nullopt;
    };
    const Time start = near(fromMs(node.start));
    const Time completion = near(fromMs(node.completion));
    if (!start && !completion) {
        return std::nullopt;
    }
    const int64_t begin = start ? *start : *completion;
    const int64_t end = std::max(begin, completion.value_or(begin));
    return Span{begin, end, node.name, hasFailed(mCapture, node), node.place};
}

void Layout::addNodes() {
    placeNodes();
    if (!mNodesReference) {
        return;
    }
    std::vector<Span> spans;
    for (const Node& node : mCapture.nodes) {
        if (const auto span = node.hasRun() ? spanOf(node) : std::nullopt) {
            spans.push_back(*span);
        }
    }
    std::stable_sort(spans.begin(), spans.end(),
                     [](const Span& one, const Span& other) { return one.begin < other.begin; });
    // Where the clock is another, the first node begins where the time line will.
    const int64_t origin = mSeen.isEmpty() ? 0 : mSeen.begin;
    const int64_t first = spans.empty() ? 0 : spans.front().begin;
    if (mLine.nodesStandApart) {
        mLine.nodesStart = first;
    }
    for (Span& span : spans) {
        if (mLine.nodesStandApart) {
            span.begin = span.begin - first + origin;
            span.end = span.end - first + origin;
        }
        const std::string name = span.name;
        addLane({Lane::Kind::kNode, name, 0, {std::move(span)}});
    }
}

void Layout::addThreads() {
    std::vector<Lane> lanes;
    for (const Call& call : mCapture.calls) {
        const Time at = usable(call.at);
        if (!at) {
            continue;
        }
        auto lane = std::find_if(lanes.begin(), lanes.end(), [&](const Lane& each) {
            return each.tid == call.tid && (call.tid != 0 || each.name == call.thread);
        });
        if (lane == lanes.end()) {
            lane = lanes.insert(lane, {Lane::Kind::kThread, call.thread, call.tid, {}});
        }
        lane->name = lane->name.empty() ? call.thread : lane->name;
        lane->spans.push_back({*at, *at, call.operation, !call.hadEffect, call.place});
    }
    const auto isEarlier = [](const Span& one, const Span& other) {
        return one.begin < other.begin;
    };
    for (Lane& lane : lanes) {
        std::stable_sort(lane.spans.begin(), lane.spans.end(), isEarlier);
    }
    std::stable_sort(lanes.begin(), lanes.end(), [&](const Lane& one, const Lane& other) {
        return isEarlier(one.spans.front(), other.spans.front());
    });
    for (Lane& lane : lanes) {
        addLane(std::move(lane));
    }
}

void Layout::addMark(Time at, const std::string& name, bool isFailure, const Place& place) {
    if (const Time time = usable(at)) {
        mLine.marks.push_back({*time, name, isFailure, place});
    }
}

void Layout::addMarks() {
    addMark(mCapture.flushed, "flush", false, {});
    for (const Report& report : mCapture.reports) {
        if (report.at != mCapture.flushed) {
            addMark(report.at, "flush", false, report.place);
        }
    }
    for (const Finding& finding : mCapture.findings) {
        if (meansFailure(finding.kind)) {
            addMark(finding.at, finding.text, true, finding.place);
        }
    }
    std::stable_sort(mLine.marks.begin(), mLine.marks.end(),
                     [](const Mark& one, const Mark& other) { return one.at < other.at; });
}

void Layout::moveToStart() {
    Range all = mSeen;
    for (const Lane& lane : mLine.lanes) {
        all.take(lane.spans);
    }
    mLine.length = all.end - all.begin;
    if (!mSeen.isEmpty()) {
        mLine.start = all.begin;
    }
    for (Lane& lane : mLine.lanes) {
        for (Span& span : lane.spans) {
            span.begin -= all.begin;
            span.end -= all.begin;
        }
    }
    for (Mark& mark : mLine.marks) {
        mark.at -= all.begin;
    }
}

std::optional<TimeLine> Layout::make() {
    findRange();
    addCapture();
    addStages();
    addNodes();
    addThreads();
    addMarks();
    if (mLine.lanes.empty()) {
        return std::nullopt;
    }
    moveToStart();
    return std::move(mLine);
}

}  // namespace

std::optional<TimeLine> timeLineOf(const Capture& capture) {
    return Layout(capture).make();
}

}  // namespace view
