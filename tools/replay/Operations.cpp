#include "Operations.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "CaptureLog.h"
#include "FieldErrors.h"
#include "FieldReader.h"
#include "InfoSyncType.h"
#include "InfoSynchronizerManager.h"
#include "OperationForm.h"
#include "Printable.h"
#include "RecordReader.h"
#include "RequestRecord.h"
#include "Spelling.h"

namespace replay {
namespace {

using camInfosync::InfoSyncType;
using camInfosync::SnapshotInfo;

using MakeCall = decltype(CaptureStep::run);

constexpr std::string_view kFlush = "snapshotRequestInfoFlush";
constexpr std::string_view kRequest = "request";

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
             {{{"image"},
               {"resultId"},
               {"errorCode", {}, codeNames(camInfosync::ResultErrorCodeToChar)}}}},
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
             {{{"image"}, {"stage", {}, codeNames(camInfosync::TimeStageToChar)}}}},
            {"updateSnapshotTimeInfo",
             Operation<std::map<std::string, int64_t>>(&Manager::updateSnapshotTimeInfo),
             {{{"image"}, {"timeInfo"}}}},
            {"updateNodeProcTime",
             &Manager::updateNodeProcTime,
             {{{"image"}, {"node"}, {"first"}, {"second"}, {"third"}}}},
            {"updateNodeProcState",
             Operation<std::string, int32_t>(&Manager::updateNodeProcState),
             {{{"image"}, {"node"}, {"state", {}, codeNames(camInfosync::NodeProcInfoToChar)}}}},
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

// Fields that any call may have.
const std::vector<std::string_view>& commonFields() {
    static const std::vector<std::string_view> fields = {"call", "thread", "at",     "manager",
                                                         "n",    "tid",    "omitted"};
    return fields;
}

void checkUnknown(const json& line, std::vector<std::string_view> known, Errors& errors) {
    known.insert(known.end(), commonFields().begin(), commonFields().end());
    for (const auto& [key, value] : line.get_ref<const json::object_t&>()) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            errors.addUnknown(Path{nullptr, key}, "this call", known);
        }
    }
}

// A field of `line` that `form` has and `other` has not; empty if there is none.
std::string_view fieldOfOne(const json& line, const OperationForm& form,
                            const OperationForm& other) {
    for (const Field& field : form.fields()) {
        if (!other.has(field.name) && line.contains(std::string(field.name))) {
            return field.name;
        }
    }
    return {};
}

// Adds an error for a line that mixes the fields of two forms of its operation.
void checkOneForm(const json& line, const OperationForm& best, Errors& errors) {
    for (const OperationForm& other : forms()) {
        if (other.name() != best.name() || &other == &best) {
            continue;
        }
        const std::string_view own = fieldOfOne(line, best, other);
        const std::string_view others = fieldOfOne(line, other, best);
        if (!own.empty() && !others.empty()) {
            errors.add(Path{nullptr, others},
                       "and " + std::string(own) + " exclude each other: give one, not both");
        }
    }
}

InfoSyncType readType(const json& line, Errors& errors) {
    InfoSyncType type{};
    const Path path{nullptr, "type"};
    if (line.contains("type")) {
        readValue(line["type"], type, path, errors);
    } else {
        errors.add(path, "is missing");
    }
    return type;
}

// Whether the field is there. Adds an error if it is not.
bool require(const json& line, std::string_view field, Errors& errors) {
    const bool there = line.contains(std::string(field));
    if (!there) {
        errors.add(Path{nullptr, field}, "is missing");
    }
    return there;
}

MakeCall readCommand(const json& line, CaptureStep& step, Errors& errors) {
    checkUnknown(line, {"type", "key", "out"}, errors);
    ZeroTerminated key;
    if (require(line, "key", errors)) {
        readValue(line["key"], key, Path{nullptr, "key"}, errors);
    }
    const bool withoutOut = line.contains("out");
    if (withoutOut && !line["out"].is_null()) {
        errors.add(Path{nullptr, "out"}, "must be null, or left out");
    }
    step.arguments.isNull = !key || withoutOut;
    return [key, withoutOut](InfoSynchronizerManager& manager) {
        void* answer = nullptr;
        manager.request(camInfosync::INFO_SYNC_TYPE_CMD, key ? key->c_str() : nullptr,
                        withoutOut ? nullptr : &answer);
    };
}

MakeCall readCollecting(InfoSyncType type, const json& line, const std::string& imageSuffix,
                        CaptureStep& step, Errors& errors) {
    checkUnknown(line, {"type", "record"}, errors);
    if (!require(line, "record", errors)) {
        return nullptr;
    }
    if (line["record"].is_null()) {
        step.arguments.isNull = true;
        return [type](InfoSynchronizerManager& manager) {
            manager.request(type, nullptr, nullptr);
        };
    }
    const auto record =
            std::make_shared<camInfosync::RequestRecord>(camInfosync::REQUEST_TYPE_DEFAULT);
    record->createTime = {};
    readValue(line["record"], *record, Path{nullptr, "record"}, errors);
    step.image = record->frameInfo.imageName;
    record->frameInfo.imageName += imageSuffix;
    step.arguments.image = record->frameInfo.imageName;
    step.arguments.record = record;
    return [type, record](InfoSynchronizerManager& manager) {
        manager.request(type, record.get(), nullptr);
    };
}

void readRequest(const json& line, const std::string& imageSuffix, CaptureStep& step,
                 Errors& errors) {
    step.operation = kRequest;
    const InfoSyncType type = readType(line, errors);
    if (errors.any()) {
        return;
    }
    step.arguments.code = type;
    switch (type) {
        case camInfosync::INFO_SYNC_TYPE_CMD:
            step.run = readCommand(line, step, errors);
            break;
        case camInfosync::INFO_SYNC_TYPE_COLLECT:
        case camInfosync::INFO_SYNC_TYPE_COLLECT_ALT:
            step.reports = true;
            step.run = readCollecting(type, line, imageSuffix, step, errors);
            break;
        default:
            checkUnknown(line, {"type"}, errors);
            step.run = [type](InfoSynchronizerManager& manager) {
                manager.request(type, nullptr, nullptr);
            };
    }
}

}  // namespace

void readOperationName(std::string_view name, CaptureStep& step, Errors& errors) {
    std::vector<std::string_view> known = {kRequest};
    for (const OperationForm& form : forms()) {
        known.push_back(form.name());
    }
    const auto position = std::find(known.begin(), known.end(), name);
    if (position == known.end()) {
        errors.add(Path{nullptr, "call"},
                   "is not an operation: " + printable(name, kLongestFieldName) +
                           didYouMean(name, known));
        return;
    }
    step.operation = *position;
}

void readOperation(std::string_view name, const json& line, const std::string& imageSuffix,
                   CaptureStep& step, Errors& errors) {
    readOperationName(name, step, errors);
    if (errors.any()) {
        return;
    }
    if (name == kRequest) {
        readRequest(line, imageSuffix, step, errors);
        return;
    }
    const OperationForm* form = findForm(name, line);
    checkOneForm(line, *form, errors);
    if (errors.any()) {
        return;
    }
    std::vector<std::string_view> known;
    for (const Field& field : form->fields()) {
        known.push_back(field.name);
    }
    checkUnknown(line, std::move(known), errors);
    step.isFlush = name == kFlush;
    step.reports = step.isFlush;
    form->readArguments(line, imageSuffix, step, errors);
}

}  // namespace replay
