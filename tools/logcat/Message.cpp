#include "Message.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "Cursor.h"
#include "LogLine.h"

namespace logcat {
namespace {

using Kind = Message::Kind;

constexpr std::string_view kFiles[] = {"InfoSynchronizerManager.cpp", "InfoSynchronizer.cpp",
                                       "InfoCollector.cpp", "RequestRecordQueue.cpp",
                                       "ThreadPool.cpp"};

// A message of `begin`, a name or text, and `end`. After an `end` that is followed by a number
// comes that number. Without an `end` the text goes on to the message's end.
struct Form {
    enum class Holds { kName, kText };
    enum class Number { kNone, kQueueSize, kAny };

    Kind kind;
    std::string_view begin;
    Holds holds;
    std::string_view end;
    Number number;
};

constexpr auto kName = Form::Holds::kName;
constexpr auto kText = Form::Holds::kText;
constexpr auto kNoNumber = Form::Number::kNone;
constexpr auto kQueueSize = Form::Number::kQueueSize;
constexpr auto kAnyNumber = Form::Number::kAny;

// Of two forms that begin alike, the longer one comes first.
constexpr Form kForms[] = {
        {Kind::kConstructEnter, "Construct Enter", kText, "", kNoNumber},
        {Kind::kConstructExit, "Construct Eixt", kText, "", kNoNumber},
        {Kind::kServiceFound, " mIntentAwareImpl is ", kText, "", kNoNumber},
        {Kind::kRegister, "register image ", kName, ", queue size: ", kQueueSize},
        {Kind::kUnregister, "unregister image ", kName, ", queue size: ", kQueueSize},
        {Kind::kFrame, "update  image ", kName, "  frameinfo, queue size: ", kQueueSize},
        {Kind::kAlgorithms, "update  image ", kName, "  zuAlgoInfo, queue size: ", kQueueSize},
        {Kind::kNodeTimes, "update  image ", kName, "  NodeProcTime, queue size: ", kQueueSize},
        {Kind::kTimeMap, "imageName: ", kName, "  timeinfo [stage ", kAnyNumber},
        {Kind::kSwitch, "camQuillSupported:", kText, "", kNoNumber},
        {Kind::kFlushDone, "flush image ", kName, "  snapshotRequestInfo to infosync module",
         kNoNumber},
        {Kind::kSubmit, "submitReq ", kText, "", kNoNumber},
        {Kind::kStart, "stime ", kText, "", kNoNumber},
        {Kind::kCompletion, "ctime ", kText, "", kNoNumber},
        {Kind::kVendorError, "had error ", kText, ", do action!", kNoNumber},
        {Kind::kUnknownName, "can't find imageName: ", kName, "", kNoNumber},
        {Kind::kUnknownName, "[InfoSynchronizer]can't find imageName: ", kName, "", kNoNumber},
        {Kind::kUnknownRemoval, "can't find imageNmae ", kName,
         "  in snapshot requestRecord queue!", kNoNumber},
        {Kind::kAlreadyRegistered, "imageNmae ", kName,
         " had exist in snapshot requestRecord queue, pl check it!", kNoNumber},
        {Kind::kCodeOutOfRange, "code out of range: ", kText, "", kNoNumber},
        {Kind::kNoErrorText, "no error text for imageName: ", kName, "", kNoNumber},
        {Kind::kNothingGiven, "no place for the result given", kText, "", kNoNumber},
        {Kind::kNothingGiven, "no command key given", kText, "", kNoNumber},
        {Kind::kNothingGiven, "no record given", kText, "", kNoNumber},
        {Kind::kPileUp, "[ThreadPool]: thread consume slowly or  blocking,task queue size ", kText,
         "", kNoNumber},
};

std::optional<uint64_t> numberOf(std::string_view text) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber ? std::optional<uint64_t>(number) : std::nullopt;
}

struct Origin {
    std::string_view file;
    std::string_view function;
    std::string_view rest;
};

bool isWord(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || letter == '_' || letter == '~' || letter == '.';
    });
}

std::optional<Origin> readOrigin(std::string_view message) {
    Cursor cursor(message);
    Origin origin;
    std::string_view group;
    int64_t line = 0;
    if (!cursor.takeUpTo(" ", group) || !isWord(group) || !cursor.takeUpTo(":", origin.file) ||
        !isWord(origin.file) || !cursor.takeNumber(line) || !cursor.take(" ") ||
        !cursor.takeUpTo("()", origin.function) || !isWord(origin.function)) {
        return std::nullopt;
    }
    origin.rest = cursor.rest();
    return origin;
}

// What is before the message's last `end`, and what follows it.
bool readEnd(std::string_view rest, const Form& form, Message& message) {
    const size_t end = form.end.empty() ? rest.size() : rest.rfind(form.end);
    if (end == std::string_view::npos) {
        return false;
    }
    (form.holds == kName ? message.name : message.text) = rest.substr(0, end);
    const std::string_view after = rest.substr(end + form.end.size());
    if (form.number == kQueueSize) {
        message.queueSize = numberOf(after);
        return message.queueSize.has_value();
    }
    if (form.number == kAnyNumber) {
        message.text = after.substr(0, after.find(" : "));
        return true;
    }
    return after.empty();
}

void readForm(std::string_view rest, const Form& form, Message& message) {
    message.kind = form.kind;
    if (readEnd(rest, form, message)) {
        return;
    }
    message.isCut = true;
    message.isNameCut = form.holds == kName;
    (message.isNameCut ? message.name : message.text) = rest;
}

bool fits(std::string_view rest, const Form& form) {
    const std::string_view after = rest.substr(std::min(rest.size(), form.begin.size()));
    return rest.substr(0, form.begin.size()) == form.begin &&
           (form.end.empty() || after.rfind(form.end) != std::string_view::npos);
}

// Also where a name is cut, which then is the whole rest.
const Form* formOf(std::string_view rest) {
    const auto begin = std::begin(kForms);
    const auto end = std::end(kForms);
    const auto* form = std::find_if(begin, end, [&](const Form& each) { return fits(rest, each); });
    if (form == end) {
        form = std::find_if(begin, end, [&](const Form& each) {
            return rest.substr(0, each.begin.size()) == each.begin;
        });
    }
    return form != end ? form : nullptr;
}

// ", type:7" after the name, by the one operation that is given a stage.
void readStage(Message& message) {
    constexpr std::string_view kType = ", type:";
    const size_t type = message.name.rfind(kType);
    if (message.operation == "updateSnapshotTimeInfo" && type != std::string::npos) {
        message.text = message.name.substr(type + kType.size());
        message.name.resize(type);
    }
}

}  // namespace

bool hasOrigin(std::string_view tag, std::string_view message) {
    const std::optional<Origin> origin = readOrigin(message);
    return origin && (!tag.empty() || std::find(std::begin(kFiles), std::end(kFiles),
                                                origin->file) != std::end(kFiles));
}

std::optional<Message> readMessage(std::string_view tag, std::string_view message) {
    if (tag == kOverlapTag) {
        Message overlap{Kind::kOverlap, {}, {}, std::string(message), {}};
        return overlap;
    }
    const std::optional<Origin> origin = readOrigin(message);
    if (!origin || !hasOrigin(tag, message)) {
        return std::nullopt;
    }
    std::string_view rest = origin->rest;
    const Form* form = formOf(rest);
    if (form == nullptr && rest.substr(0, 1) == " ") {
        rest.remove_prefix(1);  // the debug log's
        form = formOf(rest);
    }
    if (form == nullptr) {
        return std::nullopt;
    }
    Message read{form->kind, std::string(origin->function), {}, {}, {}};
    readForm(rest.substr(form->begin.size()), *form, read);
    if (form->end.empty()) {
        read.isCut = message.size() >= kLongestMessage;
        read.isNameCut = read.isCut && form->holds == kName;
    }
    if (read.kind == Kind::kSubmit || read.kind == Kind::kStart || read.kind == Kind::kCompletion) {
        read.isCut = !isWholeEvent(read.text);
    }
    if (read.kind == Kind::kUnknownName) {
        readStage(read);
    } else if (read.kind == Kind::kAlreadyRegistered) {
        read.operation = "registerSnapshotRequestRecord";  // which the queue warns about
    } else if (read.kind == Kind::kUnknownRemoval) {
        read.operation = "unregisterSnapshotRequestRecord";
    }
    return read;
}

}  // namespace logcat
