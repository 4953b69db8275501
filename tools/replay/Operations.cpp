#include "Operations.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CaptureLog.h"
#include "FieldErrors.h"
#include "FieldReader.h"
#include "InfoSyncType.h"
#include "InfoSynchronizerManager.h"
#include "JsonTree.h"
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

// The forms of an operation stand together.
const std::vector<OperationForm>& allForms() {
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

// The forms of one operation.
struct FormRange {
    const OperationForm* first;
    const OperationForm* last;

    const OperationForm* begin() const { return first; }
    const OperationForm* end() const { return last; }
};

FormRange formsOf(std::string_view name) {
    const OperationForm* begin = allForms().data();
    const OperationForm* end = begin + allForms().size();
    const auto hasName = [name](const OperationForm& form) { return form.name() == name; };
    const OperationForm* first = std::find_if(begin, end, hasName);
    return {first, std::find_if_not(first, end, hasName)};
}

// The form that the line's fields fit best.
const OperationForm& bestForm(FormRange forms, const JsonValue& line) {
    const OperationForm* best = forms.first;
    for (const OperationForm& form : forms) {
        if (&form != best && form.countPresent(line) > best->countPresent(line)) {
            best = &form;
        }
    }
    return *best;
}

// Fields that any call may have.
constexpr std::string_view kCommonFields[] = {"call", "thread", "at",     "manager",
                                              "n",    "tid",    "omitted"};

template <typename Names>
bool isAmong(const Names& names, std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

void checkUnknown(const JsonValue& line, const std::vector<std::string_view>& fields,
                  Errors& errors) {
    if (errors.underHeader()) {
        return;
    }
    for (const JsonValue& member : line) {
        if (!isAmong(fields, member.name()) && !isAmong(kCommonFields, member.name())) {
            std::vector<std::string_view> known = fields;
            known.insert(known.end(), std::begin(kCommonFields), std::end(kCommonFields));
            errors.addUnknown(Path{nullptr, member.name()}, "this call", known);
        }
    }
}

// A field of `line` that `form` has and `other` has not; empty if there is none.
std::string_view fieldOfOne(const JsonValue& line, const OperationForm& form,
                            const OperationForm& other) {
    for (const std::string_view field : form.fields()) {
        if (!other.has(field) && line.contains(field)) {
            return field;
        }
    }
    return {};
}

// Adds an error for a line that mixes the fields of two forms of its operation.
void checkOneForm(const JsonValue& line, FormRange forms, const OperationForm& best,
                  Errors& errors) {
    for (const OperationForm& other : forms) {
        if (&other == &best) {
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

// The field's value; null after an error if there is none.
const JsonValue* require(const JsonValue& line, std::string_view field, Errors& errors) {
    const JsonValue* value = line.find(field);
    if (value == nullptr) {
        errors.add(Path{nullptr, field}, "is missing");
    }
    return value;
}

InfoSyncType readType(const JsonValue& line, Errors& errors) {
    InfoSyncType type{};
    if (const JsonValue* value = require(line, "type", errors); value != nullptr) {
        readValue(*value, type, Path{nullptr, "type"}, errors);
    }
    return type;
}

MakeCall readCommand(const JsonValue& line, CaptureStep& step, Errors& errors) {
    checkUnknown(line, {"type", "key", "out"}, errors);
    ZeroTerminated key;
    if (const JsonValue* value = require(line, "key", errors); value != nullptr) {
        readValue(*value, key, Path{nullptr, "key"}, errors);
    }
    const JsonValue* out = line.find("out");
    const bool withoutOut = out != nullptr;
    if (withoutOut && !out->isNull()) {
        errors.add(Path{nullptr, "out"}, "must be null, or left out");
    }
    step.arguments.isNull = !key || withoutOut;
    return [key, withoutOut](InfoSynchronizerManager& manager) {
        void* answer = nullptr;
        manager.request(camInfosync::INFO_SYNC_TYPE_CMD, key ? key->c_str() : nullptr,
                        withoutOut ? nullptr : &answer);
    };
}

MakeCall readCollecting(InfoSyncType type, const JsonValue& line, const std::string& imageSuffix,
                        CaptureStep& step, Errors& errors) {
    checkUnknown(line, {"type", "record"}, errors);
    const JsonValue* given = require(line, "record", errors);
    if (given == nullptr) {
        return nullptr;
    }
    if (given->isNull()) {
        step.arguments.isNull = true;
        return [type](InfoSynchronizerManager& manager) {
            manager.request(type, nullptr, nullptr);
        };
    }
    const auto record =
            std::make_shared<camInfosync::RequestRecord>(camInfosync::REQUEST_TYPE_DEFAULT);
    record->createTime = {};
    readValue(*given, *record, Path{nullptr, "record"}, errors);
    step.image = record->frameInfo.imageName;
    record->frameInfo.imageName += imageSuffix;
    step.arguments.image = record->frameInfo.imageName;
    step.arguments.record = record;
    return [type, record](InfoSynchronizerManager& manager) {
        manager.request(type, record.get(), nullptr);
    };
}

void readRequest(const JsonValue& line, const std::string& imageSuffix, CaptureStep& step,
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
    const FormRange forms = formsOf(name);
    if (name == kRequest || forms.first != forms.last) {
        step.operation = name == kRequest ? kRequest : forms.first->name();
        return;
    }
    std::vector<std::string_view> known = {kRequest};
    for (const OperationForm& form : allForms()) {
        known.push_back(form.name());
    }
    errors.add(Path{nullptr, "call"}, "is not an operation: " + printable(name, kLongestFieldName) +
                                              didYouMean(name, known));
}

void readOperation(std::string_view name, const JsonValue& line, const std::string& imageSuffix,
                   CaptureStep& step, Errors& errors) {
    readOperationName(name, step, errors);
    if (errors.any()) {
        return;
    }
    if (name == kRequest) {
        readRequest(line, imageSuffix, step, errors);
        return;
    }
    const FormRange forms = formsOf(name);
    const OperationForm& form = bestForm(forms, line);
    checkOneForm(line, forms, form, errors);
    if (errors.any()) {
        return;
    }
    checkUnknown(line, form.fields(), errors);
    step.isFlush = name == kFlush;
    step.reports = step.isFlush;
    form.readArguments(line, imageSuffix, step, errors);
}

}  // namespace replay
