// Reads the values of a line's fields as the types that the library's operations take.

#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "LineError.h"
#include "Printable.h"
#include "RequestRecord.h"

namespace replay {

using nlohmann::json;

constexpr size_t kLongestFieldName = 60;  // in a message

// The way from a line to the value being read. Turned into text only for an error.
struct Path {
    const Path* parent = nullptr;
    std::string_view key;
    size_t index = 0;  // if there is no key

    std::string text() const {
        if (parent == nullptr) {
            return printable(key, kLongestFieldName);
        }
        return parent->text() + (key.data() != nullptr ? '.' + printable(key, kLongestFieldName)
                                                       : '[' + std::to_string(index) + ']');
    }
};

// Collects what is wrong with one line.
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

// "a whole number from ... to ...", as far as the type goes.
template <typename Integer>
std::string wholeNumber() {
    using Limits = std::numeric_limits<Integer>;
    return "a whole number from " + std::to_string(Limits::min()) + " to " +
           std::to_string(Limits::max());
}

// One overload of `readValue` per type that an argument can have. Each sets `out`, or adds an
// error.

template <typename Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
void readValue(const json& value, Integer& out, const Path& path, Errors& errors) {
    using Limits = std::numeric_limits<Integer>;
    bool fits = false;
    if (value.is_number_unsigned()) {
        fits = value.get<uint64_t>() <= static_cast<uint64_t>(Limits::max());
    } else if (value.is_number_integer()) {  // negative
        fits = value.get<int64_t>() >= static_cast<int64_t>(Limits::min());
    }
    if (!fits) {
        errors.add(path, "must be " + wholeNumber<Integer>());
        return;
    }
    out = value.get<Integer>();
}

template <typename Enum, std::enable_if_t<std::is_enum_v<Enum>, int> = 0>
void readValue(const json& value, Enum& out, const Path& path, Errors& errors) {
    std::underlying_type_t<Enum> number = 0;
    readValue(value, number, path, errors);
    out = static_cast<Enum>(number);
}

inline void readValue(const json& value, bool& out, const Path& path, Errors& errors) {
    if (!value.is_boolean()) {
        errors.add(path, "must be true or false");
        return;
    }
    out = value.get<bool>();
}

inline void readValue(const json& value, double& out, const Path& path, Errors& errors) {
    if (!value.is_number()) {
        errors.add(path, "must be a number");
        return;
    }
    out = value.get<double>();
}

inline void readValue(const json& value, float& out, const Path& path, Errors& errors) {
    constexpr double kMost = std::numeric_limits<float>::max();
    double number = 0;
    readValue(value, number, path, errors);
    if (number < -kMost || number > kMost) {
        errors.add(path, "is too large for a 32-bit float");
        return;
    }
    out = static_cast<float>(number);
}

inline void readValue(const json& value, std::string& out, const Path& path, Errors& errors) {
    if (!value.is_string()) {
        errors.add(path, "must be a string");
        return;
    }
    out = value.get_ref<const std::string&>();
}

inline void readValue(const json& value, ZeroTerminated& out, const Path& path, Errors& errors) {
    readValue(value, out.text, path, errors);
    if (out.text.find('\0') != std::string::npos) {
        errors.add(path, "must not contain a zero character");
    }
}

template <typename Element>
void readValue(const json& value, std::vector<Element>& out, const Path& path, Errors& errors) {
    if (!value.is_array()) {
        errors.add(path, "must be an array");
        return;
    }
    out.resize(value.size());
    for (size_t i = 0; i < out.size(); ++i) {
        readValue(value[i], out[i], Path{&path, {}, i}, errors);
    }
}

// The same for the name of an object's member. Returns whether `out` was set.
inline bool readKey(const std::string& text, std::string& out, const Path& /*path*/,
                    Errors& /*errors*/) {
    out = text;
    return true;
}

inline bool readKey(const std::string& text, int32_t& out, const Path& path, Errors& errors) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, out);
    if (error != std::errc() || stop != end) {
        errors.add(path, "must be named by " + wholeNumber<int32_t>());
        return false;
    }
    return true;
}

template <typename Key, typename Value>
void readValue(const json& value, std::map<Key, Value>& out, const Path& path, Errors& errors) {
    if (!value.is_object()) {
        errors.add(path, "must be an object");
        return;
    }
    for (const auto& [name, member] : value.get_ref<const json::object_t&>()) {
        const Path memberPath{&path, name};
        Key key{};
        if (!readKey(name, key, memberPath, errors)) {
            continue;
        }
        const auto [position, isNew] = out.try_emplace(std::move(key));
        if (!isNew) {
            errors.add(memberPath, "is the same number as an earlier name");
        }
        readValue(member, position->second, memberPath, errors);
    }
}

inline void readValue(const json& value, camInfosync::SnapshotInfo::ZuAlgoInfo& out,
                      const Path& path, Errors& errors) {
    if (!value.is_object()) {
        errors.add(path, "must be an object");
        return;
    }
    for (const auto& [name, member] : value.get_ref<const json::object_t&>()) {
        const Path memberPath{&path, name};
        if (name == "algoList") {
            readValue(member, out.algoList, memberPath, errors);
        } else if (name == "algoTimeA") {
            readValue(member, out.algoTimeA, memberPath, errors);
        } else if (name == "algoTimeB") {
            readValue(member, out.algoTimeB, memberPath, errors);
        } else if (name == "algoTimeC") {
            readValue(member, out.algoTimeC, memberPath, errors);
        } else if (name == "algoState") {
            readValue(member, out.algoState, memberPath, errors);
        } else {
            errors.add(memberPath, "is not a field of zuAlgoInfo");
        }
    }
}

}  // namespace replay
