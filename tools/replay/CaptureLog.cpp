#include "CaptureLog.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FieldErrors.h"
#include "FieldReader.h"
#include "JsonTree.h"
#include "LineError.h"
#include "Operations.h"
#include "Spelling.h"
#include "StrictJson.h"

namespace replay {
namespace {

constexpr uint64_t kLongestSleepMs = 60'000;
constexpr std::string_view kOtherManager = "GetInstance";

// What a line is, by the first of these fields that it has.
struct LineKind {
    std::string_view field;
    void (*read)(const JsonValue& line, const std::string& imageSuffix, CaptureStep& step,
                 Errors& errors);
    bool recorded;  // stands in a recording only
};

// Reads a field that may be missing.
template <typename Value>
void readOptional(const JsonValue& line, std::string_view field, Value& out, Errors& errors) {
    if (const JsonValue* value = line.find(field); value != nullptr) {
        readValue(*value, out, Path{nullptr, field}, errors);
    }
}

template <typename Value>
void readRequired(const JsonValue& line, std::string_view field, Value& out, Errors& errors) {
    if (!line.contains(field)) {
        errors.add(Path{nullptr, field}, "is missing");
    }
    readOptional(line, field, out, errors);
}

// Returns whether the line, of a log without a header, has the field all the same.
bool refuseWithoutHeader(const JsonValue& line, std::string_view field, Errors& errors) {
    const bool refused = !errors.underHeader() && line.contains(field);
    if (refused) {
        errors.add(Path{nullptr, field},
                   "is a recording's, and the recording's first line, its header, is missing");
    }
    return refused;
}

// Reads where and when a line was recorded.
void readOrigin(const JsonValue& line, std::string_view numberField, CaptureStep& step,
                Errors& errors) {
    for (const std::string_view field : {"n", "tid", "omitted", "unordered"}) {
        if (refuseWithoutHeader(line, field, errors)) {
            return;
        }
    }
    const JsonValue* at = line.find("at");
    const JsonValue* thread = line.find("thread");
    if (at != nullptr) {
        readValue(*at, step.at.emplace(), Path{nullptr, "at"}, errors);
    }
    readOptional(line, "thread", step.thread, errors);
    readOptional(line, "unordered", step.unordered, errors);
    if (const JsonValue* tid = line.find("tid"); tid != nullptr) {
        readValue(*tid, step.tid.emplace(), Path{nullptr, "tid"}, errors);
        readRequired(line, numberField, step.number, errors);
        for (const std::string_view field : {"at", "thread"}) {
            if (!line.contains(field)) {
                errors.add(Path{nullptr, field}, "is missing");
            }
        }
    } else if (thread != nullptr && thread->isText() && step.thread.empty()) {
        errors.add(Path{nullptr, "thread"}, "must not be empty");
    }
}

void readManager(const JsonValue& line, CaptureStep& step, Errors& errors) {
    const JsonValue* manager = line.find("manager");
    if (manager == nullptr) {
        return;
    }
    step.onOtherManager = manager->isText() && manager->text() == kOtherManager;
    if (!step.onOtherManager) {
        errors.add(Path{nullptr, "manager"},
                   "must be \"" + std::string(kOtherManager) +
                           "\", or left out for the manager of getInstance()");
    }
}

void readCallLine(const JsonValue& line, const std::string& imageSuffix, CaptureStep& step,
                  Errors& errors) {
    const JsonValue& call = *line.find("call");
    if (!call.isText()) {
        errors.add(Path{nullptr, "call"}, "must be a string");
        return;
    }
    const std::string_view name = call.text();
    if (line.contains("omitted")) {
        step.kind = CaptureStep::Kind::kOmittedCall;
        readOptional(line, "image", step.image.emplace(), errors);
        readOperationName(name, step, errors);
    } else {
        step.kind = CaptureStep::Kind::kCall;
        readOperation(name, line, imageSuffix, step, errors);
    }
    if (!step.operation.empty()) {
        readOrigin(line, "n", step, errors);
        readManager(line, step, errors);
    }
}

void readAnswerLine(const JsonValue& line, const std::string& /*imageSuffix*/, CaptureStep& step,
                    Errors& errors) {
    step.kind = CaptureStep::Kind::kAnswer;
    readOrigin(line, "answered", step, errors);
    if (!line.contains("tid")) {
        errors.add(Path{nullptr, "tid"}, "is missing");
    }
    readRequired(line, "key", step.answer.key, errors);
    readOptional(line, "threw", step.answer.threw, errors);
    if (!step.answer.threw) {
        readRequired(line, "answer", step.answer.text, errors);
    } else if (line.contains("answer")) {
        errors.add(Path{nullptr, "answer"}, "and threw exclude each other: give one, not both");
    }
}

void expectAlone(const JsonValue& line, std::string_view field, Errors& errors) {
    for (const JsonValue& member : line) {
        if (member.name() != field) {
            errors.add(Path{nullptr, member.name()},
                       "cannot be given together with " + std::string(field));
        }
    }
}

void expectTrue(const JsonValue& line, std::string_view field, Errors& errors) {
    const JsonValue& value = *line.find(field);
    if (!value.isBool() || !value.boolean()) {
        errors.add(Path{nullptr, field}, "must be true");
    }
}

void readEndLine(const JsonValue& line, const std::string& /*imageSuffix*/, CaptureStep& step,
                 Errors& errors) {
    step.kind = CaptureStep::Kind::kEnd;
    expectTrue(line, "end", errors);
    readRequired(line, "calls", step.number, errors);
    step.goesOn = line.contains("next");
    if (step.goesOn) {
        uint64_t part = 0;
        readRequired(line, "next", part, errors);
    }
}

void readBarrierLine(const JsonValue& line, const std::string& /*imageSuffix*/, CaptureStep& step,
                     Errors& errors) {
    step.kind = CaptureStep::Kind::kBarrier;
    expectAlone(line, "barrier", errors);
    expectTrue(line, "barrier", errors);
}

void readSleepLine(const JsonValue& line, const std::string& /*imageSuffix*/, CaptureStep& step,
                   Errors& errors) {
    step.kind = CaptureStep::Kind::kSleep;
    expectAlone(line, "sleepMs", errors);
    const JsonValue& value = *line.find("sleepMs");
    if (!value.isUnsigned() || value.unsignedNumber() > kLongestSleepMs) {
        errors.add(Path{nullptr, "sleepMs"},
                   "must be a whole number from 0 to " + std::to_string(kLongestSleepMs));
        return;
    }
    step.sleep = std::chrono::milliseconds(value.unsignedNumber());
}

constexpr LineKind kLineKinds[] = {
        {"call", readCallLine, false},     {"answered", readAnswerLine, true},
        {"end", readEndLine, true},        {"barrier", readBarrierLine, false},
        {"sleepMs", readSleepLine, false},
};

// What is wrong with an object that has none of the fields that make a line.
void refuseForeign(const JsonValue& line, CaptureStep& step, Errors& errors) {
    if (line.contains("format")) {
        errors.add(Path{nullptr, "format"}, "the header must be the log's first line");
        return;
    }
    std::string guess;
    for (const JsonValue& member : line) {
        guess = didYouMean(member.name(), {"call", "barrier", "sleepMs"});
        if (!guess.empty()) {
            errors.add(Path{nullptr, member.name()}, "is not a field of a line" + guess);
            return;
        }
    }
    step.kind = CaptureStep::Kind::kForeign;
    errors.add(Path{nullptr, "call"}, "is missing");
}

void readObject(const JsonValue& line, const std::string& imageSuffix, CaptureStep& step,
                Errors& errors) {
    for (const LineKind& kind : kLineKinds) {
        if (line.contains(kind.field)) {
            if (!kind.recorded || !refuseWithoutHeader(line, kind.field, errors)) {
                kind.read(line, imageSuffix, step, errors);
            }
            return;
        }
    }
    refuseForeign(line, step, errors);
}

}  // namespace

CaptureStep readCaptureLine(std::string_view line, const std::string& imageSuffix,
                            std::vector<LineError>& errorList, LineRules rules, JsonTree& tree) {
    CaptureStep step;
    const size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string_view::npos || line[begin] == '#') {
        return step;
    }
    if (const JsonValue* object = tree.parse(line); object != nullptr) {
        std::vector<LineError> found;
        Errors errors(found, rules);
        readObject(*object, imageSuffix, step, errors);
        if (found.empty()) {
            return step;
        }
        step = {};
    }
    // Something is wrong, which is told in the order of the members' names, or odd.
    bool isJson = true;
    const JsonValue* object = parseObject(line, tree, errorList, &isJson);
    if (object == nullptr) {
        step.kind = isJson ? CaptureStep::Kind::kForeign : CaptureStep::Kind::kBroken;
        return step;
    }
    Errors errors(errorList, rules);
    readObject(*object, imageSuffix, step, errors);
    return step;
}

}  // namespace replay
