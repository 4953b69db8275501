// Reads the arguments of one operation of the library.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "CaptureLog.h"
#include "FieldErrors.h"
#include "FieldReader.h"
#include "InfoSynchronizerManager.h"
#include "JsonTree.h"
#include "RecordReader.h"
#include "Spelling.h"

namespace replay {

using camInfosync::InfoSynchronizerManager;

// How an argument is stored until its call is made.
template <typename Argument>
using StoredArgument =
        std::conditional_t<std::is_same_v<Argument, const char*>, ZeroTerminated, Argument>;

template <typename Argument>
Argument asArgument(const StoredArgument<Argument>& stored) {
    if constexpr (std::is_same_v<Argument, const char*>) {
        return stored ? stored->c_str() : nullptr;
    } else {
        return stored;
    }
}

// The texts that a code may be given by: a table of the library's, indexed by the code.
struct CodeNames {
    const char* const* texts = nullptr;
    size_t count = 0;
};

template <size_t Count>
CodeNames codeNames(const char* const (&texts)[Count]) {
    return {texts, Count};
}

template <typename Code>
void readCodeName(std::string_view name, CodeNames codes, Code& out, const Path& path,
                  Errors& errors) {
    const std::vector<std::string_view> texts(codes.texts, codes.texts + codes.count);
    const auto position = std::find(texts.begin(), texts.end(), name);
    if (position != texts.end()) {
        out = static_cast<Code>(position - texts.begin());
        return;
    }
    std::string list;
    for (const std::string_view text : texts) {
        list += (list.empty() ? "" : ", ") + std::string(text);
    }
    errors.add(path, "must be a number or one of " + list + didYouMean(name, texts));
}

struct Field {
    std::string_view name;
    bool optional = false;  // if missing: zero
    CodeNames codes{};      // if it may be given by name
};

template <typename Value>
void noteNames(const std::map<std::string, Value>& map, CallArguments& arguments) {
    for (const auto& [name, value] : map) {
        arguments.names.push_back(name);
    }
}

// Keeps of an argument what the effect of the call depends on.
template <typename Value>
void noteArgument(const Field& field, const Value& value, CallArguments& arguments) {
    if constexpr (std::is_same_v<Value, std::string>) {
        if (field.name == "image") {
            arguments.image = value;
        } else if (field.name == "node") {
            arguments.names = {value};
        }
    } else if constexpr (std::is_same_v<Value, ZeroTerminated>) {
        arguments.isNull = !value.has_value();
    } else if constexpr (std::is_integral_v<Value> || std::is_enum_v<Value>) {
        if (field.codes.count != 0 || field.name == "type") {
            arguments.code = static_cast<int64_t>(value);
        } else if (field.name == "resultId") {
            arguments.names = {std::to_string(static_cast<int32_t>(value))};
        }
    } else if constexpr (std::is_same_v<Value, camInfosync::SnapshotInfo::ZuAlgoInfo>) {
        for (const auto* times : {&value.algoTimeA, &value.algoTimeB, &value.algoTimeC}) {
            noteNames(*times, arguments);
        }
    } else if constexpr (std::is_same_v<Value, camInfosync::SnapshotInfo::VendorResultInfo>) {
        for (const auto& [id, text] : value) {
            arguments.names.push_back(std::to_string(id));
        }
    } else if constexpr (std::is_same_v<Value, std::vector<std::string>>) {
        arguments.isList = true;
    } else if constexpr (std::is_same_v<Value, std::map<std::string, int64_t>> ||
                         std::is_same_v<Value, std::map<std::string, std::string>>) {
        noteNames(value, arguments);
    }
}

// One operation of the library, with one of its argument lists.
class OperationForm {
  public:
    // `fields` are the names of the operation's arguments.
    template <typename... Arguments>
    OperationForm(std::string_view name, void (InfoSynchronizerManager::*operation)(Arguments...),
                  const std::array<Field, sizeof...(Arguments)>& fields)
        : mName(name) {
        for (const Field& field : fields) {
            mFields.push_back(field.name);
        }
        mReadArguments = [operation, fields](const JsonValue& line, const std::string& suffix,
                                             CaptureStep& step, Errors& errors) {
            bindArguments(operation, fields, line, suffix, step, errors,
                          std::index_sequence_for<Arguments...>());
        };
    }

    std::string_view name() const { return mName; }
    const std::vector<std::string_view>& fields() const { return mFields; }
    bool has(std::string_view name) const {
        return std::find(mFields.begin(), mFields.end(), name) != mFields.end();
    }
    size_t countPresent(const JsonValue& line) const {
        return static_cast<size_t>(
                std::count_if(mFields.begin(), mFields.end(),
                              [&line](std::string_view field) { return line.contains(field); }));
    }
    // Sets the step's call, and its image if the operation has one.
    void readArguments(const JsonValue& line, const std::string& imageSuffix, CaptureStep& step,
                       Errors& errors) const {
        mReadArguments(line, imageSuffix, step, errors);
    }

  private:
    template <typename Value>
    static void readField(const JsonValue& line, const Field& field, Value& out, Errors& errors) {
        const JsonValue* value = line.find(field.name);
        const Path path{nullptr, field.name};
        if constexpr (std::is_integral_v<Value>) {
            if (field.codes.count != 0 && value != nullptr && value->isText()) {
                readCodeName(value->text(), field.codes, out, path, errors);
                return;
            }
        }
        if (value != nullptr) {
            readValue(*value, out, path, errors);
        } else if (!field.optional) {
            errors.add(path, "is missing");
        }
    }

    template <typename... Arguments, size_t... I>
    static void bindArguments(void (InfoSynchronizerManager::*operation)(Arguments...),
                              const std::array<Field, sizeof...(Arguments)>& fields,
                              const JsonValue& line, const std::string& imageSuffix,
                              CaptureStep& step, Errors& errors,
                              std::index_sequence<I...> /*indices*/) {
        std::tuple<StoredArgument<Arguments>...> arguments;
        (readField(line, fields[I], std::get<I>(arguments), errors), ...);
        if constexpr (std::is_same_v<std::decay_t<decltype(std::get<0>(arguments))>, std::string>) {
            step.image = std::get<0>(arguments);  // the image name comes first
            std::get<0>(arguments) += imageSuffix;
        }
        (noteArgument(fields[I], std::get<I>(arguments), step.arguments), ...);
        step.run = [operation, arguments = std::move(arguments)](InfoSynchronizerManager& manager) {
            (manager.*operation)(asArgument<Arguments>(std::get<I>(arguments))...);
        };
    }

    std::string_view mName;
    std::vector<std::string_view> mFields;
    std::function<void(const JsonValue&, const std::string&, CaptureStep&, Errors&)> mReadArguments;
};

}  // namespace replay
