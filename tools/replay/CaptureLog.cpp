#include "CaptureLog.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "FieldReader.h"
#include "InfoSynchronizerManager.h"
#include "LineError.h"
#include "Printable.h"
#include "RequestRecord.h"
#include "StrictJson.h"

namespace replay {
namespace {

using camInfosync::InfoSynchronizerManager;
using camInfosync::SnapshotInfo;

constexpr int64_t kLongestSleepMs = 60'000;

// How an argument is stored until its call is made.
template <typename Argument>
using StoredArgument =
        std::conditional_t<std::is_same_v<Argument, const char*>, ZeroTerminated, Argument>;

template <typename Argument>
Argument asArgument(const StoredArgument<Argument>& stored) {
    if constexpr (std::is_same_v<Argument, const char*>) {
        return stored.text.c_str();
    } else {
        return stored;
    }
}

struct Field {
    std::string_view name;
    bool optional = false;  // if missing: zero
};

using MakeCall = decltype(CaptureStep::run);

// One operation of the library, with one of its argument lists.
class OperationForm {
  public:
    // `fields` are the names of the operation's arguments.
    template <typename... Arguments>
    OperationForm(std::string_view name, void (InfoSynchronizerManager::*operation)(Arguments...),
                  const std::array<Field, sizeof...(Arguments)>& fields)
        : mName(name), mFields(fields.begin(), fields.end()) {
        mReadArguments = [operation, fields](const json& line, const std::string& suffix,
                                             Errors& errors) {
            return bindArguments(operation, fields, line, suffix, errors,
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
    MakeCall readArguments(const json& line, const std::string& imageSuffix, Errors& errors) const {
        return mReadArguments(line, imageSuffix, errors);
    }

  private:
    template <typename Value>
    static void readField(const json& line, const Field& field, Value& out, Errors& errors) {
        const auto position = line.find(std::string(field.name));
        const Path path{nullptr, field.name};
        if (position != line.end()) {
            readValue(*position, out, path, errors);
        } else if (!field.optional) {
            errors.add(path, "is missing");
        }
    }

    template <typename... Arguments, size_t... I>
    static MakeCall bindArguments(void (InfoSynchronizerManager::*operation)(Arguments...),
                                  const std::array<Field, sizeof...(Arguments)>& fields,
                                  const json& line, const std::string& imageSuffix, Errors& errors,
                                  std::index_sequence<I...> /*indices*/) {
        std::tuple<StoredArgument<Arguments>...> arguments;
        (readField(line, fields[I], std::get<I>(arguments), errors), ...);
        if constexpr (std::is_same_v<std::decay_t<decltype(std::get<0>(arguments))>, std::string>) {
            std::get<0>(arguments) += imageSuffix;  // the image name comes first
        }
        return [operation, arguments = std::move(arguments)](InfoSynchronizerManager& manager) {
            (manager.*operation)(asArgument<Arguments>(std::get<I>(arguments))...);
        };
    }

    std::string_view mName;
    std::vector<Field> mFields;
    std::function<MakeCall(const json&, const std::string&, Errors&)> mReadArguments;
};

constexpr std::string_view kFlush = "snapshotRequestInfoFlush";

using Manager = InfoSynchronizerManager;
template <typename... Arguments>
using Operation = void (Manager::*)(std::string, Arguments...);

const std::vector<OperationForm>& forms() {
    static const std::vector<OperationForm> forms = {
            {"registerSnapshotRequestRecord",
             &Manager::registerSnapshotRequestRecord,
             {{{"image"}}}},
            {"unregisterSnapshotRequestRecord",
             &Manager::unregisterSnapshotRequestRecord,
             {{{"image"}}}},
            {kFlush, &Manager::snapshotRequestInfoFlush, {{{"image"}, {"type", true}}}},
            {"updateFrameInfo",
             &Manager::updateFrameInfo,
             {{{"image"}, {"frameNumber"}, {"timestamp"}, {"camIds"}, {"frameExtra"}}}},
            {"updateRequestInfo",
             &Manager::updateRequestInfo,
             {{{"image"},
               {"reqValueA"},
               {"reqValueB"},
               {"reqFlag"},
               {"reqValue64"},
               {"reqIdsA"},
               {"expectedResultIds"}}}},
            {"updateUIInfo",
             &Manager::updateUIInfo,
             {{{"image"},
               {"requestType"},
               {"camMode"},
               {"faceDetect"},
               {"zoomRatio"},
               {"uiExtra"}}}},
            {"updateAnchor3aInfo",
             &Manager::updateAnchor3aInfo,
             {{{"image"}, {"fstop"}, {"iso"}, {"lux"}, {"exposureTime"}}}},
            {"updateAnchorFrame", &Manager::updateAnchorFrame, {{{"image"}, {"anchorFrame"}}}},
            {"updateVndResultInfo",
             Operation<uint32_t, int32_t>(&Manager::updateVndResultInfo),
             {{{"image"}, {"resultId"}, {"errorCode"}}}},
            {"updateVndResultInfo",
             Operation<SnapshotInfo::VendorResultInfo>(&Manager::updateVndResultInfo),
             {{{"image"}, {"vendorResultInfo"}}}},
            {"updateZuAlgoInfo",
             Operation<std::vector<std::string>>(&Manager::updateZuAlgoInfo),
             {{{"image"}, {"algoList"}}}},
            {"updateZuAlgoInfo",
             Operation<SnapshotInfo::ZuAlgoInfo>(&Manager::updateZuAlgoInfo),
             {{{"image"}, {"zuAlgoInfo"}}}},
            {"updateSnapshotErrorInfo", &Manager::updateSnapshotErrorInfo, {{{"image"}, {"text"}}}},
            {"updatePostProcInfo", &Manager::updatePostProcInfo, {{{"postProcInfo"}}}},
            {"updateSnapshotTimeInfo",
             Operation<uint32_t>(&Manager::updateSnapshotTimeInfo),
             {{{"image"}, {"stage"}}}},
            {"updateSnapshotTimeInfo",
             Operation<std::map<std::string, int64_t>>(&Manager::updateSnapshotTimeInfo),
             {{{"image"}, {"timeInfo"}}}},
            {"updateNodeProcTime",
             &Manager::updateNodeProcTime,
             {{{"image"}, {"node"}, {"first"}, {"second"}, {"third"}}}},
            {"updateNodeProcState",
             Operation<std::string, int32_t>(&Manager::updateNodeProcState),
             {{{"image"}, {"node"}, {"state"}}}},
            {"updateNodeProcState",
             Operation<std::map<std::string, std::string>>(&Manager::updateNodeProcState),
             {{{"image"}, {"states"}}}},
    };
    return forms;
}

// The form of the operation that the line's fields fit best, or null.
const OperationForm* findForm(std::string_view name, const json& line) {
    const OperationForm* best = nullptr;
    for (const OperationForm& form : forms()) {
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
    readValue(*position, thread, path, errors);
    if (position->is_string() && thread.empty()) {
        errors.add(path, "must not be empty");
    }
}

void readCallLine(const json& line, const std::string& imageSuffix, CaptureStep& step,
                  Errors& errors) {
    const Path path{nullptr, "call"};
    std::string name;
    readValue(line["call"], name, path, errors);
    if (errors.any()) {
        return;
    }
    const OperationForm* form = findForm(name, line);
    if (form == nullptr) {
        errors.add(path, "is not an operation: " + printable(name, kLongestFieldName));
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
    step.run = form->readArguments(line, imageSuffix, errors);
}

void expectAlone(const json& line, std::string_view field, Errors& errors) {
    for (const auto& [key, value] : line.get_ref<const json::object_t&>()) {
        if (key != field) {
            errors.add(Path{nullptr, key}, "cannot be given together with " + std::string(field));
        }
    }
}

void readBarrierLine(const json& line, CaptureStep& step, Errors& errors) {
    expectAlone(line, "barrier", errors);
    if (line["barrier"] != true) {
        errors.add(Path{nullptr, "barrier"}, "must be true");
    }
    step.kind = CaptureStep::Kind::kBarrier;
}

void readSleepLine(const json& line, CaptureStep& step, Errors& errors) {
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
        readCallLine(value, imageSuffix, step, errors);
    } else if (value.contains("barrier")) {
        readBarrierLine(value, step, errors);
    } else if (value.contains("sleepMs")) {
        readSleepLine(value, step, errors);
    } else {
        errors.add(Path{nullptr, "call"}, "is missing");
    }
    return step;
}

}  // namespace replay
