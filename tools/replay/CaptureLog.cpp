#include "CaptureLog.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <tuple>
#include <type_traits>
#include <utility>

#include "FieldReader.h"
#include "InfoSynchronizerManager.h"
#include "Printable.h"
#include "StrictJson.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;
using camInfosync::SnapshotInfo;

constexpr int64_t kLongestSleepMs = 60'000;

// How an argument is kept until its call is made.
template <typename Argument>
using Kept = std::conditional_t<std::is_same_v<Argument, const char*>, ZeroTerminated, Argument>;

template <typename Argument>
Argument give(const Kept<Argument>& kept) {
    if constexpr (std::is_same_v<Argument, const char*>) {
        return kept.text.c_str();
    } else {
        return kept;
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
        return [operation, arguments = std::move(arguments)](InfoSynchronizerManager& m) {
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
        errors.add(path, "is no operation: " + printable(name, kLongestFieldName));
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

}  // namespace

CaptureStep readCaptureLine(std::string_view line, const std::string& imageSuffix,
                            std::vector<LineError>& errorList) {
    CaptureStep step;
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
        return step;
    }
    const json value = parseObject(line, errorList);
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
