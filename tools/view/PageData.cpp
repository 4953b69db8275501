#include "PageData.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "JsonText.h"
#include "PageNames.h"
#include "TimeLine.h"
#include "View.h"

namespace view {
namespace {

// Values as a JSON array.
template <typename Values, typename ToJson>
std::string arrayOf(const Values& values, ToJson toJson) {
    std::string array = "[";
    for (const auto& value : values) {
        array += (array.size() == 1 ? "" : ",") + toJson(value);
    }
    return array + ']';
}

// Values of different kinds as a JSON array. They are made from left to right, so that names get
// their numbers in the same order with every compiler.
std::string row(std::initializer_list<std::string> values) {
    return arrayOf(values, [](const std::string& value) { return value; });
}

std::string flag(bool value) {
    return value ? "1" : "0";
}

std::string numberOrNull(std::optional<double> value) {
    return value ? jsonNumber(*value) : "null";
}

// Whole microseconds, which a script can hold exactly.
std::string microsecondsOf(int64_t nanoseconds) {
    return std::to_string(nanoseconds / 1000 - (nanoseconds % 1000 < 0 ? 1 : 0));
}

std::string placeOf(const Place& place) {
    const std::string line = std::to_string(place.line);
    return place.source == 0 ? line : row({std::to_string(place.source), line});
}

// Makes a capture's object, with times since the beginning of its time line.
class CaptureObject {
  public:
    CaptureObject(const Capture& capture, PageNames& names)
        : mCapture(capture), mNames(names), mLine(timeLineOf(capture)) {}

    std::string make();

  private:
    void add(const char* name, const std::string& value) {
        mObject += (mObject.empty() ? "{\"" : ",\"") + std::string(name) + "\":" + value;
    }
    std::string time(Time time) const;
    std::string event(bool hasHappened, Time at) const;
    std::string lane(const Lane& lane);

    void addFacts();
    void addTimeLine();
    void addRecord();
    void addNodes();
    void addReports();
    void addCalls();
    void addFindings();

    const Capture& mCapture;
    PageNames& mNames;
    const std::optional<TimeLine> mLine;
    std::string mObject;
};

// Null if it is not known.
std::string CaptureObject::time(Time time) const {
    int64_t since = 0;
    if (!time || !mLine || !mLine->start || __builtin_sub_overflow(*time, *mLine->start, &since)) {
        return "null";
    }
    return microsecondsOf(since);
}

std::string CaptureObject::event(bool hasHappened, Time at) const {
    const std::string when = time(at);
    return !hasHappened ? "false" : when == "null" ? "true" : when;
}

void CaptureObject::addFacts() {
    add("number", std::to_string(mCapture.number));
    add("name", jsonText(mCapture.name));
    if (!mCapture.process.empty()) {
        add("process", mNames.json(mCapture.process));
    }
    add("failed", mCapture.hasFailed() ? "true" : "false");
    add("ms", numberOrNull(mCapture.duration()));
    add("registered", event(mCapture.isRegistered, mCapture.registered));
    add("flushed", event(mCapture.isFlushed, mCapture.flushed));
    add("removed", event(mCapture.isRemoved, mCapture.removed));
}

// A node's span has the lane's name.
std::string CaptureObject::lane(const Lane& lane) {
    const bool isNode = lane.kind == Lane::Kind::kNode;
    const std::string name = isNode ? mNames.json(lane.name) : "null";
    const auto span = [&](const Span& each) {
        const std::string begin = microsecondsOf(each.begin);
        const std::string end = microsecondsOf(each.end);
        return isNode ? row({begin, end, flag(each.hasFailed)})
                      : row({begin, end, flag(each.hasFailed), mNames.json(each.name)});
    };
    return row({std::to_string(static_cast<int>(lane.kind)), name, arrayOf(lane.spans, span)});
}

// Threads' lanes are left out: the calls say the same.
void CaptureObject::addTimeLine() {
    if (!mLine) {
        return;
    }
    const int64_t start = mLine->start ? *mLine->start : mLine->nodesStart.value_or(0);
    add(mLine->start ? "start" : "nodesStart", microsecondsOf(start));
    if (mLine->nodesStandApart && mLine->start) {
        add("nodesStandApart", "true");
    }
    add("length", microsecondsOf(mLine->length));
    std::string lanes;
    for (const Lane& each : mLine->lanes) {
        if (each.kind != Lane::Kind::kThread) {
            lanes += (lanes.empty() ? "" : ",") + lane(each);
        }
    }
    add("lanes", '[' + lanes + ']');
    add("marks", arrayOf(mLine->marks, [&](const Mark& mark) {
            return row({microsecondsOf(mark.at), mNames.json(mark.name), flag(mark.isFailure)});
        }));
}

void CaptureObject::addRecord() {
    if (mCapture.cameras) {
        add("cameras",
            arrayOf(*mCapture.cameras, [](uint32_t camera) { return std::to_string(camera); }));
    }
    if (mCapture.algorithms) {
        add("algorithms", arrayOf(*mCapture.algorithms,
                                  [&](const std::string& name) { return mNames.json(name); }));
    }
    if (mCapture.stages) {
        add("stages", arrayOf(*mCapture.stages, [&](const Stage& stage) {
                return row({std::to_string(stage.number), mNames.json(stage.name),
                            stage.isKnown ? std::to_string(stage.ms) : "null"});
            }));
    }
    if (mCapture.results) {
        add("results", arrayOf(*mCapture.results, [&](const VendorResult& result) {
                return row({std::to_string(result.id), mNames.json(result.text),
                            placeOf(result.place)});
            }));
    }
    add("values", arrayOf(mCapture.values, [&](const Value& value) {
            return row({std::to_string(static_cast<int>(value.group)), mNames.json(value.name),
                        jsonText(value.text)});
        }));
}

void CaptureObject::addNodes() {
    add("nodes", arrayOf(mCapture.nodes, [&](const Node& node) {
            return row({mNames.json(node.name), numberOrNull(node.start), numberOrNull(node.second),
                        numberOrNull(node.completion), mNames.json(node.state), flag(node.isListed),
                        placeOf(node.place)});
        }));
}

void CaptureObject::addReports() {
    const auto parameter = [&](const std::pair<std::string, std::string>& each) {
        return row({mNames.json(each.first), jsonText(each.second)});
    };
    add("reports", arrayOf(mCapture.reports, [&](const Report& report) {
            const std::string closing = report.closing
                                                ? row({std::to_string(report.closing->first),
                                                       std::to_string(report.closing->second)})
                                                : "null";
            return row({time(report.at), placeOf(report.place),
                        arrayOf(report.parameters, parameter), std::to_string(report.events.size()),
                        closing});
        }));
}

void CaptureObject::addCalls() {
    std::map<std::pair<std::string, int32_t>, size_t> numbers;
    std::vector<std::string> threads;
    const auto thread = [&](const Call& call) {
        const auto [entry, isNew] =
                numbers.emplace(std::pair(call.thread, call.tid), numbers.size());
        if (isNew) {
            threads.push_back(row({mNames.json(call.thread), std::to_string(call.tid)}));
        }
        return std::to_string(entry->second);
    };
    add("calls", arrayOf(mCapture.calls, [&](const Call& call) {
            const std::string operation = mNames.json(call.operation);
            const std::string at = time(call.at);
            const std::string place = placeOf(call.place);
            return call.hadEffect ? row({operation, thread(call), at, place})
                                  : row({operation, thread(call), at, place, "0"});
        }));
    add("threads", arrayOf(threads, [](const std::string& each) { return each; }));
}

std::string findingOf(const Finding& finding, const std::string& at) {
    const char* weight = meansFailure(finding.kind) ? "0" : meansNoEffect(finding.kind) ? "1" : "2";
    return row({jsonOfSafe(nameOf(finding.kind)), weight, jsonText(finding.text),
                jsonText(finding.subject), placeOf(finding.place), at,
                std::to_string(finding.calls)});
}

void CaptureObject::addFindings() {
    add("findings", arrayOf(mCapture.findings, [&](const Finding& finding) {
            return findingOf(finding, time(finding.at));
        }));
}

std::string CaptureObject::make() {
    addFacts();
    addTimeLine();
    addRecord();
    addNodes();
    addReports();
    addCalls();
    addFindings();
    return mObject + '}';
}

}  // namespace

std::string pageCapture(const Capture& capture, PageNames& names) {
    return CaptureObject(capture, names).make();
}

std::string pageSession(const Session& session) {
    const auto text = [](const std::string& each) { return jsonText(each); };
    const auto entry = [](const std::pair<const std::string, std::string>& each) {
        return row({jsonText(each.first), jsonText(each.second)});
    };
    const std::string toReal = session.clock == Clock::kReal ? "0"
                               : session.toReal              ? microsecondsOf(*session.toReal)
                                                             : "null";
    return "{\"sources\":" + arrayOf(session.sources, text) + ",\"toReal\":" + toReal +
           ",\"switches\":" + arrayOf(session.switches, entry) + ",\"findings\":" +
           arrayOf(session.findings, [](const Finding& each) { return findingOf(each, "null"); }) +
           ",\"notes\":" + arrayOf(session.notes, text) +
           ",\"calls\":" + std::to_string(session.calls) + '}';
}

}  // namespace view
