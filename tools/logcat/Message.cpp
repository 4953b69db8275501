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

// A message of `begin`, a name or another text, `end`, and what comes after it. Without an `end`
// the text goes on to the message's end.
struct Form {
    enum class Holds { kName, kText };
    enum class After { kNothing, kQueueSize, kStage };

    Kind kind;
    Holds holds;
    std::string_view begin;
    std::string_view end;
    After after;
};

constexpr auto kName = Form::Holds::kName;
constexpr auto kText = Form::Holds::kText;
constexpr auto kNothing = Form::After::kNothing;
constexpr auto kQueueSize = Form::After::kQueueSize;
constexpr auto kStage = Form::After::kStage;

constexpr Form kForms[] = {
        {Kind::kConstructEnter, kText, "Construct Enter", "", kNothing},
        {Kind::kConstructExit, kText, "Construct Eixt", "", kNothing},
        {Kind::kServiceFound, kText, " mIntentAwareImpl is ", "", kNothing},
        {Kind::kRegister, kName, "register image ", ", queue size: ", kQueueSize},
        {Kind::kUnregister, kName, "unregister image ", ", queue size: ", kQueueSize},
        {Kind::kFrame, kName, "update  image ", "  frameinfo, queue size: ", kQueueSize},
        {Kind::kAlgorithms, kName, "update  image ", "  zuAlgoInfo, queue size: ", kQueueSize},
        {Kind::kNodeTimes, kName, "update  image ", "  NodeProcTime, queue size: ", kQueueSize},
        {Kind::kTimeMap, kName, "imageName: ", "  timeinfo [stage ", kStage},
        {Kind::kSwitch, kText, "camQuillSupported:", "", kNothing},
        {Kind::kFlushDone, kName, "flush image ", "  snapshotRequestInfo to infosync module",
         kNothing},
        {Kind::kSubmit, kText, "submitReq ", "", kNothing},
        {Kind::kStart, kText, "stime ", "", kNothing},
        {Kind::kCompletion, kText, "ctime ", "", kNothing},
        {Kind::kVendorError, kText, "had error ", ", do action!", kNothing},
        {Kind::kUnknownName, kName, "can't find imageName: ", "", kNothing},
        {Kind::kUnknownName, kName, "[InfoSynchronizer]can't find imageName: ", "", kNothing},
        {Kind::kUnknownRemoval, kName, "can't find imageNmae ",
         "  in snapshot requestRecord queue!", kNothing},
        {Kind::kAlreadyRegistered, kName, "imageNmae ",
         " had exist in snapshot requestRecord queue, pl check it!", kNothing},
        {Kind::kCodeOutOfRange, kText, "code out of range: ", "", kNothing},
        {Kind::kNoErrorText, kName, "no error text for imageName: ", "", kNothing},
        {Kind::kNothingGiven, kText, "no place for the result given", "", kNothing},
        {Kind::kNothingGiven, kText, "no command key given", "", kNothing},
        {Kind::kNothingGiven, kText, "no record given", "", kNothing},
        {Kind::kPileUp, kText, "[ThreadPool]: thread consume slowly or  blocking,task queue size ",
         "", kNothing},
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
    if (!cursor.takeUpTo(" ", group) || group.empty() || !cursor.takeUpTo(":", origin.file) ||
        !isWord(origin.file) || !cursor.takeNumber(line) || !cursor.take(" ") ||
        !cursor.takeUpTo("()", origin.function) || !isWord(origin.function)) {
        return std::nullopt;
    }
    origin.rest = cursor.rest();
    return origin;
}

bool begins(std::string_view rest, const Form& form) {
    return rest.substr(0, form.begin.size()) == form.begin;
}

// Reads what follows the origin. False if it has not that form, or not the form's end.
bool readWhole(std::string_view rest, const Form& form, Message& message) {
    if (!begins(rest, form)) {
        return false;
    }
    rest.remove_prefix(form.begin.size());
    const size_t end = form.end.empty() ? rest.size() : rest.rfind(form.end);
    if (end == std::string_view::npos) {
        return false;
    }
    message.kind = form.kind;
    (form.holds == kName ? message.name : message.text) = rest.substr(0, end);
    const std::string_view after = rest.substr(end + form.end.size());
    if (form.after == kQueueSize) {
        message.queueSize = numberOf(after);
        return message.queueSize.has_value();
    }
    if (form.after == kStage) {
        message.text = after.substr(0, after.find(" : "));
        return true;
    }
    return after.empty();
}

bool readCut(std::string_view rest, const Form& form, Message& message) {
    if (!begins(rest, form)) {
        return false;
    }
    message.kind = form.kind;
    message.isCut = true;
    message.isNameCut = form.holds == kName;
    (message.isNameCut ? message.name : message.text) = rest.substr(form.begin.size());
    return true;
}

// Reads what follows the origin. `isFull` says that the message is as long as one can be, and may
// go on.
bool readRest(std::string_view rest, bool isFull, Message& message) {
    const Message unread = message;
    for (const Form& form : kForms) {
        if ((!isFull || !form.end.empty()) && readWhole(rest, form, message)) {
            return true;
        }
        message = unread;
    }
    return std::any_of(std::begin(kForms), std::end(kForms),
                       [&](const Form& form) { return readCut(rest, form, message); });
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
    const bool isFull = message.size() >= kLongestMessage;
    Message read;
    read.operation = origin->function;
    // The debug log has a blank before its messages.
    if (!readRest(origin->rest, isFull, read) &&
        (origin->rest.substr(0, 1) != " " || !readRest(origin->rest.substr(1), isFull, read))) {
        return std::nullopt;
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
