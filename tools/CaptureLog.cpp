#include "CaptureLog.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <type_traits>
#include <utility>

#include <nlohmann/json.hpp>

#include "InfoSynchronizerManager.h"
#include "Printable.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;
using camInfosync::SnapshotInfo;
using nlohmann::json;

constexpr int kDeepestNesting = 8;
constexpr int64_t kLongestSleepMs = 60'000;
constexpr size_t kLongestQuote = 60;

// The way from a line to the value being read. Turned into text only for an error.
struct Path {
    const Path* parent = nullptr;
    std::string_view key{};
    size_t index = 0;  // if there is no key

    std::string text() const {
        if (parent == nullptr) {
            return printable(key, kLongestQuote);
        }
        return parent->text() + (key.data() != nullptr ? '.' + printable(key, kLongestQuote)
                                                       : '[' + std::to_string(index) + ']');
    }
};

class Errors {
  public:
    explicit Errors(std::vector<LineError>& list) : mList(list), mBefore(list.size()) {}

    void add(const Path& path, std::string what) {
        mList.push_back({path.text(), std::move(what)});
    }
    bool any() const { return mList.size() > mBefore; }

  private:
    std::vector<LineError>& mList;
    size_t mBefore;
};

// A text that the library takes as a const char*.
struct ZeroTerminated {
    std::string text;
};

// One overload of `read` per type that an argument can have.

template <typename Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
void read(const json& value, Integer& out, const Path& path, Errors& errors) {
    using Limits = std::numeric_limits<Integer>;
    bool fits = false;
    if (value.is_number_unsigned()) {
        fits = value.get<uint64_t>() <= static_cast<uint64_t>(Limits::max());
    } else if (value.is_number_integer()) {  // negative
        fits = std::is_signed_v<Integer> &&
               value.get<int64_t>() >= static_cast<int64_t>(Limits::min());
    }
    if (!fits) {
        errors.add(path, "must be a whole number from " + std::to_string(Limits::min()) + " to " +
                                 std::to_string(Limits::max()));
        return;
    }
    out = value.get<Integer>();
}

template <typename Enum, std::enable_if_t<std::is_enum_v<Enum>, int> = 0>
void read(const json& value, Enum& out, const Path& path, Errors& errors) {
    std::underlying_type_t<Enum> number = 0;
    read(value, number, path, errors);
    out = static_cast<Enum>(number);
}

void read(const json& value, bool& out, const Path& path, Errors& errors) {
    if (!value.is_boolean()) {
        errors.add(path, "must be true or false");
        return;
    }
    out = value.get<bool>();
}

void read(const json& value, double& out, const Path& path, Errors& errors) {
    if (!value.is_number()) {
        errors.add(path, "must be a number");
        return;
    }
    out = value.get<double>();
}

void read(const json& value, float& out, const Path& path, Errors& errors) {
    constexpr double kMost = std::numeric_limits<float>::max();
    double number = 0;
    read(value, number, path, errors);
    if (number < -kMost || number > kMost) {
        errors.add(path, "is too large for a 32-bit float");
        return;
    }
    out = static_cast<float>(number);
}

void read(const json& value, std::string& out, const Path& path, Errors& errors) {
    if (!value.is_string()) {
        errors.add(path, "must be a text");
        return;
    }
    out = value.get_ref<const std::string&>();
}

void read(const json& value, ZeroTerminated& out, const Path& path, Errors& errors) {
    read(value, out.text, path, errors);
    if (out.text.find('\0') != std::string::npos) {
        errors.add(path, "must not hold a zero character");
    }
}

template <typename Element>
void read(const json& value, std::vector<Element>& out, const Path& path, Errors& errors) {
    if (!value.is_array()) {
        errors.add(path, "must be a list");
        return;
    }
    out.resize(value.size());
    for (size_t i = 0; i < out.size(); ++i) {
        read(value[i], out[i], Path{&path, {}, i}, errors);
    }
}

void readKey(const std::string& text, std::string& out, const Path& /*path*/, Errors& /*errors*/) {
    out = text;
}

void readKey(const std::string& text, int32_t& out, const Path& path, Errors& errors) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, out);
    if (error != std::errc() || stop != end) {
        errors.add(path, "must have a 32-bit whole number as its name");
    }
}

template <typename Key, typename Value>
void read(const json& value, std::map<Key, Value>& out, const Path& path, Errors& errors) {
    if (!value.is_object()) {
        errors.add(path, "must be an object");
        return;
    }
    for (const auto& [name, member] : value.get_ref<const json::object_t&>()) {
        const Path memberPath{&path, name};
        Key key{};
        readKey(name, key, memberPath, errors);
        const auto [position, isNew] = out.try_emplace(std::move(key));
        if (!isNew) {
            errors.add(memberPath, "stands for a number that was given before");
        }
        read(member, position->second, memberPath, errors);
    }
}

void read(const json& value, SnapshotInfo::ZuAlgoInfo& out, const Path& path, Errors& errors) {
    if (!value.is_object()) {
        errors.add(path, "must be an object");
        return;
    }
    for (const auto& [name, member] : value.get_ref<const json::object_t&>()) {
        const Path memberPath{&path, name};
        if (name == "algoList") {
            read(member, out.algoList, memberPath, errors);
        } else if (name == "algoTimeA") {
            read(member, out.algoTimeA, memberPath, errors);
        } else if (name == "algoTimeB") {
            read(member, out.algoTimeB, memberPath, errors);
        } else if (name == "algoTimeC") {
            read(member, out.algoTimeC, memberPath, errors);
        } else if (name == "algoState") {
            read(member, out.algoState, memberPath, errors);
        } else {
            errors.add(memberPath, "is not a field of zuAlgoInfo");
        }
    }
}

// How an argument is kept until its call is made.
template <typename Argument>
using Kept = std::conditional_t<std::is_same_v<Argument, const char*>, ZeroTerminated, Argument>;

template <typename Argument>
Argument give(Kept<Argument>& kept) {
    if constexpr (std::is_same_v<Argument, const char*>) {
        return kept.text.c_str();
    } else {
        return std::move(kept);
    }
}

struct Field {
    std::string_view name;
    bool optional = false;  // if missing: zero
};

using Run = decltype(CaptureStep::run);

// One operation of the library, with one of its argument lists.
class Form {
  public:
    // `fields` are the names of the operation's arguments.
    template <typename... Arguments>
    Form(std::string_view name, void (InfoSynchronizerManager::*operation)(Arguments...),
         const std::array<Field, sizeof...(Arguments)>& fields)
        : mName(name), mFields(fields.begin(), fields.end()) {
        mRead = [operation, fields](const json& line, const std::string& suffix, Errors& errors) {
            return readCall(operation, fields, line, suffix, errors,
                            std::index_sequence_for<Arguments...>());
        };
    }

    std::string_view name() const { return mName; }
    bool has(std::string_view name) const {
        return std::any_of(mFields.begin(), mFields.end(),
                           [name](const Field& field) { return field.name == name; });
    }
    size_t countPresent(const json& line) const {
        return static_cast<size_t>(std::count_if(
                mFields.begin(), mFields.end(),
                [&line](const Field& field) { return line.contains(std::string(field.name)); }));
    }
    Run readCall(const json& line, const std::string& imageSuffix, Errors& errors) const {
        return mRead(line, imageSuffix, errors);
    }

  private:
    template <typename Value>
    static void readField(const json& line, const Field& field, Value& out, Errors& errors) {
        const auto position = line.find(std::string(field.name));
        const Path path{nullptr, field.name};
        if (position != line.end()) {
            read(*position, out, path, errors);
        } else if (!field.optional) {
            errors.add(path, "is missing");
        }
    }

    template <typename... Arguments, size_t... I>
    static Run readCall(void (InfoSynchronizerManager::*operation)(Arguments...),
                        const std::array<Field, sizeof...(Arguments)>& fields, const json& line,
                        const std::string& imageSuffix, Errors& errors,
                        std::index_sequence<I...> /*indices*/) {
        std::tuple<Kept<Arguments>...> arguments;
        (readField(line, fields[I], std::get<I>(arguments), errors), ...);
        if constexpr (std::is_same_v<std::decay_t<decltype(std::get<0>(arguments))>, std::string>) {
            std::get<0>(arguments) += imageSuffix;  // the image name comes first
        }
        return [operation, arguments = std::move(arguments)](InfoSynchronizerManager& m) mutable {
            (m.*operation)(give<Arguments>(std::get<I>(arguments))...);
        };
    }

    std::string_view mName;
    std::vector<Field> mFields;
    std::function<Run(const json&, const std::string&, Errors&)> mRead;
};

constexpr std::string_view kFlush = "snapshotRequestInfoFlush";

using M = InfoSynchronizerManager;
template <typename... Arguments>
using Operation = void (M::*)(std::string, Arguments...);

const std::vector<Form>& forms() {
    static const std::vector<Form> forms = {
            {"registerSnapshotRequestRecord", &M::registerSnapshotRequestRecord, {{{"image"}}}},
            {"unregisterSnapshotRequestRecord", &M::unregisterSnapshotRequestRecord, {{{"image"}}}},
            {kFlush, &M::snapshotRequestInfoFlush, {{{"image"}, {"type", true}}}},
            {"updateFrameInfo",
             &M::updateFrameInfo,
             {{{"image"}, {"frameNumber"}, {"timestamp"}, {"camIds"}, {"frameExtra"}}}},
            {"updateRequestInfo",
             &M::updateRequestInfo,
             {{{"image"},
               {"reqValueA"},
               {"reqValueB"},
               {"reqFlag"},
               {"reqValue64"},
               {"reqIdsA"},
               {"expectedResultIds"}}}},
            {"updateUIInfo",
             &M::updateUIInfo,
             {{{"image"},
               {"requestType"},
               {"camMode"},
               {"faceDetect"},
               {"zoomRatio"},
               {"uiExtra"}}}},
            {"updateAnchor3aInfo",
             &M::updateAnchor3aInfo,
             {{{"image"}, {"fstop"}, {"iso"}, {"lux"}, {"exposureTime"}}}},
            {"updateAnchorFrame", &M::updateAnchorFrame, {{{"image"}, {"anchorFrame"}}}},
            {"updateVndResultInfo",
             Operation<uint32_t, int32_t>(&M::updateVndResultInfo),
             {{{"image"}, {"resultId"}, {"errorCode"}}}},
            {"updateVndResultInfo",
             Operation<SnapshotInfo::VendorResultInfo>(&M::updateVndResultInfo),
             {{{"image"}, {"vendorResultInfo"}}}},
            {"updateZuAlgoInfo",
             Operation<std::vector<std::string>>(&M::updateZuAlgoInfo),
             {{{"image"}, {"algoList"}}}},
            {"updateZuAlgoInfo",
             Operation<SnapshotInfo::ZuAlgoInfo>(&M::updateZuAlgoInfo),
             {{{"image"}, {"zuAlgoInfo"}}}},
            {"updateSnapshotErrorInfo", &M::updateSnapshotErrorInfo, {{{"image"}, {"text"}}}},
            {"updatePostProcInfo", &M::updatePostProcInfo, {{{"postProcInfo"}}}},
            {"updateSnapshotTimeInfo",
             Operation<uint32_t>(&M::updateSnapshotTimeInfo),
             {{{"image"}, {"stage"}}}},
            {"updateSnapshotTimeInfo",
             Operation<std::map<std::string, int64_t>>(&M::updateSnapshotTimeInfo),
             {{{"image"}, {"timeInfo"}}}},
            {"updateNodeProcTime",
             &M::updateNodeProcTime,
             {{{"image"}, {"node"}, {"first"}, {"second"}, {"third"}}}},
            {"updateNodeProcState",
             Operation<std::string, int32_t>(&M::updateNodeProcState),
             {{{"image"}, {"node"}, {"state"}}}},
            {"updateNodeProcState",
             Operation<std::map<std::string, std::string>>(&M::updateNodeProcState),
             {{{"image"}, {"states"}}}},
    };
    return forms;
}

// The form of the operation that the line's fields fit best, or null.
const Form* findForm(std::string_view name, const json& line) {
    const Form* best = nullptr;
    for (const Form& form : forms()) {
        if (form.name() == name &&
            (best == nullptr || form.countPresent(line) > best->countPresent(line))) {
            best = &form;
        }
    }
    return best;
}

void readThread(const json& line, std::string& thread, Errors& errors) {
    const auto position = line.find("thread");
    if (position == line.end()) {
        return;
    }
    const Path path{nullptr, "thread"};
    read(*position, thread, path, errors);
    if (position->is_string() && thread.empty()) {
        errors.add(path, "must not be empty");
    }
}

void readCall(const json& line, const std::string& imageSuffix, CaptureStep& step, Errors& errors) {
    const Path path{nullptr, "call"};
    std::string name;
    read(line["call"], name, path, errors);
    if (errors.any()) {
        return;
    }
    const Form* form = findForm(name, line);
    if (form == nullptr) {
        errors.add(path, "is no operation: " + printable(name, kLongestQuote));
        return;
    }
    for (const auto& [key, value] : line.get_ref<const json::object_t&>()) {
        if (key != "call" && key != "thread" && !form->has(key)) {
            errors.add(Path{nullptr, key}, "is not a field of this call");
        }
    }
    readThread(line, step.thread, errors);
    step.kind = CaptureStep::Kind::kCall;
    step.isFlush = name == kFlush;
    step.run = form->readCall(line, imageSuffix, errors);
}

void expectAlone(const json& line, std::string_view field, Errors& errors) {
    for (const auto& [key, value] : line.get_ref<const json::object_t&>()) {
        if (key != field) {
            errors.add(Path{nullptr, key}, "cannot stand beside " + std::string(field));
        }
    }
}

void readBarrier(const json& line, CaptureStep& step, Errors& errors) {
    expectAlone(line, "barrier", errors);
    if (line["barrier"] != true) {
        errors.add(Path{nullptr, "barrier"}, "must be true");
    }
    step.kind = CaptureStep::Kind::kBarrier;
}

void readSleep(const json& line, CaptureStep& step, Errors& errors) {
    expectAlone(line, "sleepMs", errors);
    const json& value = line["sleepMs"];
    if (!value.is_number_unsigned() || value.get<uint64_t>() > kLongestSleepMs) {
        errors.add(Path{nullptr, "sleepMs"},
                   "must be a whole number from 0 to " + std::to_string(kLongestSleepMs));
        return;
    }
    step.kind = CaptureStep::Kind::kSleep;
    step.sleep = std::chrono::milliseconds(value.get<int64_t>());
}

// Leaves the parser at the first thing that JSON allows and a capture log does not.
struct Refused {
    LineError error;
};

// Refuses deep nesting and names that an object has twice.
class StructureCheck {
  public:
    bool operator()(int depth, json::parse_event_t event, const json& value) {
        using Event = json::parse_event_t;
        if (event == Event::object_start || event == Event::array_start) {
            if (depth >= kDeepestNesting) {
                throw Refused{{"line", "is nested deeper than " + std::to_string(kDeepestNesting)}};
            }
            (*mKeys)[static_cast<size_t>(depth)].clear();
        } else if (event == Event::key) {
            const auto& key = value.get_ref<const std::string&>();
            if (!(*mKeys)[static_cast<size_t>(depth) - 1].insert(key).second) {
                throw Refused{{printable(key, kLongestQuote), "is given twice"}};
            }
        }
        return true;
    }

  private:
    // The names so far of each object around the current place. Shared: the parser copies this.
    std::shared_ptr<std::array<std::set<std::string>, kDeepestNesting>> mKeys =
            std::make_shared<std::array<std::set<std::string>, kDeepestNesting>>();
};

// What the parser says, without its own error number and place.
std::string parserText(const json::exception& error) {
    std::string_view text = error.what();
    for (const std::string_view mark : {"] ", "column "}) {
        const size_t position = text.find(mark);
        if (position != std::string_view::npos) {
            text.remove_prefix(position + mark.size());
        }
    }
    constexpr size_t kLongestText = 160;
    return printable(text, kLongestText);
}

// The line's object, or null after an error.
json parse(std::string_view line, std::vector<LineError>& errors) {
    try {
        json value = json::parse(line, StructureCheck());
        if (value.is_object()) {
            return value;
        }
        errors.push_back({"line", "must be an object"});
    } catch (const Refused& refused) {
        errors.push_back(refused.error);
    } catch (const json::parse_error& error) {
        errors.push_back({"line", "is no JSON at column " + parserText(error)});
    } catch (const json::out_of_range& error) {
        errors.push_back({"line", parserText(error)});
    }
    return nullptr;
}

}  // namespace

CaptureStep readCaptureLine(std::string_view line, const std::string& imageSuffix,
                            std::vector<LineError>& errorList) {
    CaptureStep step;
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
        return step;
    }
    const json value = parse(line, errorList);
    if (value.is_null()) {
        return step;
    }
    Errors errors(errorList);
    if (value.contains("call")) {
        readCall(value, imageSuffix, step, errors);
    } else if (value.contains("barrier")) {
        readBarrier(value, step, errors);
    } else if (value.contains("sleepMs")) {
        readSleep(value, step, errors);
    } else {
        errors.add(Path{nullptr, "call"}, "is missing");
    }
    return step;
}

}  // namespace replay
