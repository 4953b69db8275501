#include "CaptureLog.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "FieldErrors.h"
#include "FieldReader.h"
#include "LineError.h"
#include "Operations.h"
#include "Spelling.h"
#include "StrictJson.h"

namespace replay {
namespace {

constexpr int64_t kLongestSleepMs = 60'000;
constexpr std::string_view kOtherManager = "GetInstance";

// What a line is, by the first of these fields that it has.
struct LineKind {
    std::string_view field;
    void (*read)(const json& line, const std::string& imageSuffix, CaptureStep& step,
                 Errors& errors);
    bool recorded;  // stands in a recording only
};

// Reads a field that may be missing.
template <typename Value>
void readOptional(const json& line, std::string_view field, Value& out, Errors& errors) {
    const auto position = line.find(std::string(field));
    if (position != line.end()) {
        readValue(*position, out, Path{nullptr, field}, errors);
    }
}

template <typename Value>
void readRequired(const json& line, std::string_view field, Value& out, Errors& errors) {
    if (!line.contains(std::string(field))) {
        errors.add(Path{nullptr, field}, "is missing");
    }
    readOptional(line, field, out, errors);
}

// Returns whether the line, of a log without a header, has the field all the same.
bool refuseWithoutHeader(const json& line, std::string_view field, Errors& errors) {
    const bool refused = !errors.underHeader() && line.contains(std::string(field));
    if (refused) {
        errors.add(Path{nullptr, field},
                   "is a recording's, and the recording's first line, its header, is missing");
    }
    return refused;
}

// Reads where and when a line was recorded.
void readOrigin(const json& line, std::string_view numberField, CaptureStep& step, Errors& errors) {
    for (const std::string_view field : {"n", "tid", "omitted", "unordered"}) {
        if (refuseWithoutHeader(line, field, errors)) {
            return;
        }
    }
    if (line.contains("at")) {
        readValue(line["at"], step.at.emplace(), Path{nullptr, "at"}, errors);
    }
    readOptional(line, "thread", step.thread, errors);
    readOptional(line, "unordered", step.unordered, errors);
    if (line.contains("tid")) {
        readValue(line["tid"], step.tid.emplace(), Path{nullptr, "tid"}, errors);
        readRequired(line, numberField, step.number, errors);
        for (const std::string_view field : {"at", "thread"}) {
            if (!line.contains(std::string(field))) {
                errors.add(Path{nullptr, field}, "is missing");
            }
        }
    } else if (line.contains("thread") && line["thread"].is_string() && step.thread.empty()) {
        errors.add(Path{nullptr, "thread"}, "must not be empty");
    }
}

void readManager(const json& line, CaptureStep& step, Errors& errors) {
    if (!line.contains("manager")) {
        return;
    }
    step.onOtherManager = line["manager"] == kOtherManager;
    if (!step.onOtherManager) {
        errors.add(Path{nullptr, "manager"},
                   "must be \"" + std::string(kOtherManager) +
                           "\", or left out for the manager of getInstance()");
    }
}

void readCallLine(const json& line, const std::string& imageSuffix, CaptureStep& step,
                  Errors& errors) {
    if (!line["call"].is_string()) {
        errors.add(Path{nullptr, "call"}, "must be a string");
        return;
    }
    const auto& name = line["call"].get_ref<const std::string&>();
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

void readAnswerLine(const json& line, const std::string& /*imageSuffix*/, CaptureStep& step,
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

void expectAlone(const json& line, std::string_view field, Errors& errors) {
    for (const auto& [key, value] : line.get_ref<const json::object_t&>()) {
        if (key != field) {
            errors.add(Path{nullptr, key}, "cannot be given together with " + std::string(field));
        }
    }
}

void expectTrue(const json& line, std::string_view field, Errors& errors) {
    if (line[std::string(field)] != true) {
        errors.add(Path{nullptr, field}, "must be true");
    }
}

void readEndLine(const json& line, const std::string& /*imageSuffix*/, CaptureStep& step,
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

void readBarrierLine(const json& line, const std::string& /*imageSuffix*/, CaptureStep& step,
                     Errors& errors) {
    step.kind = CaptureStep::Kind::kBarrier;
    expectAlone(line, "barrier", errors);
    expectTrue(line, "barrier", errors);
}

void readSleepLine(const json& line, const std::string& /*imageSuffix*/, CaptureStep& step,
                   Errors& errors) {
    step.kind = CaptureStep::Kind::kSleep;
    expectAlone(line, "sleepMs", errors);
    const json& value = line["sleepMs"];
    if (!value.is_number_unsigned() || value.get<uint64_t>() > kLongestSleepMs) {
        errors.add(Path{nullptr, "sleepMs"},
                   "must be a whole number from 0 to " + std::to_string(kLongestSleepMs));
        return;
    }
    step.sleep = std::chrono::milliseconds(value.get<int64_t>());
}

constexpr LineKind kLineKinds[] = {
        {"call", readCallLine, false},     {"answered", readAnswerLine, true},
        {"end", readEndLine, true},        {"barrier", readBarrierLine, false},
        {"sleepMs", readSleepLine, false},
};

// What is wrong with an object that has none of the fields that make a line.
void refuseForeign(const json& line, CaptureStep& step, Errors& errors) {
    if (line.contains("format")) {
        errors.add(Path{nullptr, "format"}, "the header must be the log's first line");
        return;
    }
    std::string guess;
    for (const auto& [key, value] : line.get_ref<const json::object_t&>()) {
        guess = didYouMean(key, {"call", "barrier", "sleepMs"});
        if (!guess.empty()) {
            errors.add(Path{nullptr, key}, "is not a field of a line" + guess);
            return;
        }
    }
    step.kind = CaptureStep::Kind::kForeign;
    errors.add(Path{nullptr, "call"}, "is missing");
}

void readObject(const json& line, const std::string& imageSuffix, CaptureStep& step,
                Errors& errors) {
    for (const LineKind& kind : kLineKinds) {
        if (line.contains(std::string(kind.field))) {
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
                            std::vector<LineError>& errorList, LineRules rules) {
    CaptureStep step;
    const size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string_view::npos || line[begin] == '#') {
        return step;
    }
    bool isJson = true;
    const json value = parseObject(line, errorList, &isJson);
    if (value.is_null()) {
        step.kind = isJson ? CaptureStep::Kind::kForeign : CaptureStep::Kind::kBroken;
        return step;
    }
    Errors errors(errorList, rules);
    readObject(value, imageSuffix, step, errors);
    return step;
}

}  // namespace replay
