#include "Trace.h"

#include <cstdint>
#include <limits>
#include <string>

#include "Capture.h"
#include "Finding.h"
#include "FindingText.h"
#include "JsonText.h"
#include "MomentText.h"
#include "NewFile.h"
#include "TerminalText.h"
#include "TimeLine.h"
#include "TraceEvents.h"
#include "View.h"

namespace view {
namespace {

using Origin = TraceEvents::Clock;

// "name":"value", for objects.
std::string field(const char* name, const std::string& value) {
    return std::string(1, '"') + name + "\":" + value;
}

void append(std::string& list, const std::string& entry) {
    list += (list.empty() ? "" : ",") + entry;
}

std::string valuesOf(const Capture& capture) {
    std::string values;
    for (const Value& value : capture.values) {
        append(values, jsonText(value.name) + ':' + jsonText(value.text));
    }
    return '{' + values + '}';
}

std::string findingsOf(const Capture& capture, const Session& session) {
    std::string findings;
    for (const Finding& finding : capture.findings) {
        const std::string place = placeText(finding.place, session);
        append(findings, jsonOfSafe((place.empty() ? "" : place + ": ") + safe(finding.text)));
    }
    return '[' + findings + ']';
}

std::string argumentsOf(const Capture& capture, const Session& session) {
    std::string arguments = field("number", std::to_string(capture.number));
    if (!capture.process.empty()) {
        append(arguments, field("process", jsonText(capture.process)));
    }
    if (capture.cameras) {
        std::string cameras;
        for (const uint32_t camera : *capture.cameras) {
            append(cameras, std::to_string(camera));
        }
        append(arguments, field("cameras", '[' + cameras + ']'));
    }
    append(arguments, field("values", valuesOf(capture)));
    append(arguments, field("findings", findingsOf(capture, session)));
    return arguments;
}

std::string titleOf(const Lane& lane) {
    switch (lane.kind) {
        case Lane::Kind::kCapture:
            return "capture";
        case Lane::Kind::kStages:
            return "stages";
        case Lane::Kind::kNode:
            return "node " + lane.name;
        case Lane::Kind::kThread:
            break;
    }
    const std::string name = lane.name.empty() ? "calls" : "calls of " + lane.name;
    return lane.tid == 0 ? name : name + " (" + std::to_string(lane.tid) + ")";
}

const char* categoryOf(Lane::Kind kind) {
    switch (kind) {
        case Lane::Kind::kCapture:
            return "capture";
        case Lane::Kind::kStages:
            return "stage";
        case Lane::Kind::kNode:
            return "node";
        case Lane::Kind::kThread:
            break;
    }
    return "call";
}

// Categories are words with commas between them.
std::string category(const char* name, bool hasFailed) {
    return field("cat", std::string(1, '"') + name + (hasFailed ? ",failed\"" : "\""));
}

std::string argumentsOf(const Place& where, const Session& session) {
    const std::string place = placeText(where, session);
    return place.empty() ? "" : field("place", jsonOfSafe(place));
}

// Writes a capture's events.
class Process {
  public:
    Process(TraceEvents& events, uint32_t& lastId, const Session& session, const TimeLine& line)
        : mEvents(events),
          mLastId(lastId),
          mSession(session),
          mOrigin(line.start ? Origin::kSession : Origin::kNodes),
          mStart(line.start ? *line.start : line.nodesStart.value_or(0)) {}

    void write(const Capture& capture, const TimeLine& line);

  private:
    void name(const char* what, const std::string& arguments) {
        mEvents.add(Origin::kNone, 0,
                    field("ph", "\"M\"") + ids() + ',' + field("name", std::string("\"") + what) +
                            "\"," + field("args", '{' + arguments + '}'));
    }
    std::string ids() const {
        return ',' + field("pid", std::to_string(mProcess)) + ',' +
               field("tid", std::to_string(mLastId));
    }
    // The events that follow are on this thread.
    void beginThread(const std::string& title);
    void write(const Lane& lane, const std::string& captureArguments);
    void write(const Mark& mark);

    TraceEvents& mEvents;
    uint32_t& mLastId;
    const Session& mSession;
    Origin mOrigin;
    int64_t mStart;
    uint32_t mProcess = 0;
    uint32_t mThreads = 0;
};

void Process::beginThread(const std::string& title) {
    // The first thread has the id of its process, as in a real one.
    mLastId += mThreads == 0 ? 0 : 1;
    name("thread_name", field("name", jsonText(title)));
    name("thread_sort_index", field("sort_index", std::to_string(mThreads)));
    ++mThreads;
}

void Process::write(const Lane& lane, const std::string& captureArguments) {
    beginThread(titleOf(lane));
    for (const Span& span : lane.spans) {
        const bool isFirst = &span == &lane.spans.front();
        const std::string arguments = lane.kind == Lane::Kind::kCapture && isFirst
                                              ? captureArguments
                                              : argumentsOf(span.place, mSession);
        mEvents.add(mOrigin, mStart + span.begin,
                    field("ph", "\"X\"") + ids() + ',' +
                            field("dur", microseconds(span.end - span.begin)) + ',' +
                            field("name", jsonText(span.name)) + ',' +
                            category(categoryOf(lane.kind), span.hasFailed) + ',' +
                            field("args", '{' + arguments + '}'));
    }
}

void Process::write(const Mark& mark) {
    mEvents.add(mOrigin, mStart + mark.at,
                field("ph", "\"i\"") + ids() + ',' + field("s", "\"t\"") + ',' +
                        field("name", jsonText(mark.name)) + ',' +
                        category(mark.isFailure ? "error" : "flush", mark.isFailure) + ',' +
                        field("args", '{' + argumentsOf(mark.place, mSession) + '}'));
}

void Process::write(const Capture& capture, const TimeLine& line) {
    mProcess = ++mLastId;
    name("process_name", field("name", jsonText(capture.name)));
    name("process_sort_index", field("sort_index", std::to_string(capture.number)));
    const std::string arguments = argumentsOf(capture, mSession);
    for (const Lane& lane : line.lanes) {
        write(lane, arguments);
    }
    if (line.marks.empty()) {
        return;
    }
    beginThread("errors and flushes");
    for (const Mark& mark : line.marks) {
        write(mark);
    }
}

const char* nameOf(Clock clock) {
    switch (clock) {
        case Clock::kNone:
            break;
        case Clock::kMonotonic:
            return "\"monotonic\"";
        case Clock::kReal:
            return "\"real\"";
    }
    return "\"none\"";
}

// Whole numbers past 2^53 stand as texts.
std::string metadata(const Session& session, int64_t start, uint64_t withoutTimes) {
    std::string data = field("clock", nameOf(session.clock));
    if (start != std::numeric_limits<int64_t>::max()) {
        append(data, field("start_ns", '"' + std::to_string(start) + '"'));
        append(data, field("begins", jsonOfSafe(momentText(start, session))));
    }
    std::string sources;
    for (const std::string& source : session.sources) {
        append(sources, jsonText(source));
    }
    append(data, field("sources", '[' + sources + ']'));
    append(data, field("captures_without_times", std::to_string(withoutTimes)));
    return '{' + data + '}';
}

}  // namespace

void Trace::add(const Capture& capture, const Session& session) {
    const auto line = timeLineOf(capture);
    if (!line) {
        ++mWithoutTimes;
        return;
    }
    Process(mEvents, mLastId, session, *line).write(capture, *line);
}

void Trace::finish(const Session& session) {
    mFile.refuse(session.sources);
    mFile.write("{\"displayTimeUnit\":\"ms\",\"traceEvents\":[");
    mEvents.writeTo(mFile);
    mFile.write("\n],\"metadata\":" +
                metadata(session, mEvents.firstOf(Origin::kSession), mWithoutTimes) + "}\n");
    mFile.finish();
}

}  // namespace view
