// Reads the values of a line's fields as the types that the library's operations take.

#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "FieldErrors.h"
#include "JsonTree.h"

namespace replay {

// A text that the library takes as a const char*; none is a null pointer.
using ZeroTerminated = std::optional<std::string>;

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
void readValue(const JsonValue& value, Integer& out, const Path& path, Errors& errors) {
    using Limits = std::numeric_limits<Integer>;
    bool fits = false;
    if (value.isUnsigned()) {
        fits = value.unsignedNumber() <= static_cast<uint64_t>(Limits::max());
    } else if (value.isWhole()) {  // negative
        fits = value.signedNumber() >= static_cast<int64_t>(Limits::min());
    }
    if (!fits) {
        errors.add(path, "must be " + wholeNumber<Integer>());
        return;
    }
    out = value.isUnsigned() ? static_cast<Integer>(value.unsignedNumber())
                             : static_cast<Integer>(value.signedNumber());
}

template <typename Enum, std::enable_if_t<std::is_enum_v<Enum>, int> = 0>
void readValue(const JsonValue& value, Enum& out, const Path& path, Errors& errors) {
    std::underlying_type_t<Enum> number = 0;
    readValue(value, number, path, errors);
    out = static_cast<Enum>(number);
}

inline void readValue(const JsonValue& value, bool& out, const Path& path, Errors& errors) {
    if (!value.isBool()) {
        errors.add(path, "must be true or false");
        return;
    }
    out = value.boolean();
}

// The number that "inf", "-inf" or "nan:0x" and the number's bits stands for. Returns whether
// `text` is one of them.
template <typename Float>
bool readSpecial(std::string_view text, Float& out) {
    using Bits = std::conditional_t<sizeof(Float) == sizeof(uint32_t), uint32_t, uint64_t>;
    constexpr std::string_view kNan = "nan:0x";
    if (text == "inf" || text == "-inf") {
        constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
        out = text == "inf" ? kInfinity : -kInfinity;
        return true;
    }
    if (text.substr(0, kNan.size()) != kNan || text.size() != kNan.size() + 2 * sizeof(Bits)) {
        return false;
    }
    Bits bits = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + kNan.size(), end, bits, 16);
    Float number = 0;
    std::memcpy(&number, &bits, sizeof(number));
    if (error != std::errc() || stop != end || !std::isnan(number)) {
        return false;
    }
    std::memcpy(&out, &bits, sizeof(out));
    return true;
}

inline void assign(double number, double& out) {
    out = number;
}
// The float that is nearest to the number as it was written. The double that was read of it may
// lie on the other side of the middle between two floats: 7.038531e-26 does.
inline void assign(double number, float& out) {
    char text[32];
    *std::to_chars(text, std::end(text) - 1, number).ptr = '\0';
    out = std::strtof(text, nullptr);
}

template <typename Float, std::enable_if_t<std::is_floating_point_v<Float>, int> = 0>
void readValue(const JsonValue& value, Float& out, const Path& path, Errors& errors) {
    if (value.isText() && readSpecial(value.text(), out)) {
        return;
    }
    if (!value.isNumber()) {
        errors.add(path, "must be a number");
        return;
    }
    const double number = value.number();
    if (std::fabs(number) > static_cast<double>(std::numeric_limits<Float>::max())) {
        errors.add(path, "is too large for a 32-bit float");
        return;
    }
    assign(number, out);
}

// The bytes that pairs of hexadecimal digits stand for. Returns whether `hex` is such a text.
inline bool bytesOfHex(std::string_view hex, std::string& bytes) {
    bytes.clear();
    bytes.reserve(hex.size() / 2);
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        uint8_t byte = 0;
        const char* end = hex.data() + i + 2;
        const auto [stop, error] = std::from_chars(hex.data() + i, end, byte, 16);
        if (error != std::errc() || stop != end) {
            return false;
        }
        bytes += static_cast<char>(byte);
    }
    return hex.size() % 2 == 0;
}

// A text: a string, or {"hex":"..."} with its bytes.
inline void readValue(const JsonValue& value, std::string& out, const Path& path, Errors& errors) {
    if (value.isText()) {
        out = value.text();
        return;
    }
    const JsonValue* hex = value.isObject() && value.size() == 1 ? value.find("hex") : nullptr;
    if (hex == nullptr) {
        errors.add(path, "must be a string");
    } else if (!hex->isText() || !bytesOfHex(hex->text(), out)) {
        errors.add(Path{&path, "hex"}, "must be a string of pairs of hexadecimal digits");
    }
}

inline void readValue(const JsonValue& value, ZeroTerminated& out, const Path& path,
                      Errors& errors) {
    if (value.isNull()) {
        out.reset();
        return;
    }
    readValue(value, out.emplace(), path, errors);
    if (out->find('\0') != std::string::npos) {
        errors.add(path, "must not contain a zero character");
    }
}

template <typename Element>
void readValue(const JsonValue& value, std::vector<Element>& out, const Path& path,
               Errors& errors) {
    if (!value.isArray()) {
        errors.add(path, "must be an array");
        return;
    }
    out.resize(value.size());
    size_t i = 0;
    for (const JsonValue& element : value) {
        readValue(element, out[i], Path{&path, {}, i}, errors);
        ++i;
    }
}

// The same for the name of an object's member. Returns whether `out` was set.
inline bool readKey(std::string_view text, std::string& out, const Path& /*path*/,
                    Errors& /*errors*/) {
    out = text;
    return true;
}

inline bool readKey(std::string_view text, int32_t& out, const Path& path, Errors& errors) {
    const char* begin = text.data();
    const char* end = begin + text.size();
    const auto [stop, error] = std::from_chars(begin, end, out);
    if (error != std::errc() || stop != end) {
        errors.add(path, "must be named by " + wholeNumber<int32_t>());
        return false;
    }
    return true;
}

// Reads one entry of a map, whose key has been read.
template <typename Key, typename Value>
void readEntry(Key key, const JsonValue& value, std::map<Key, Value>& out, const Path& path,
               Errors& errors) {
    const auto [position, isNew] = out.try_emplace(std::move(key));
    if (!isNew) {
        errors.add(path, std::is_integral_v<Key> ? "is the same number as an earlier name"
                                                 : "has the same name as an earlier pair");
    }
    readValue(value, position->second, path, errors);
}

// A map as an array of pairs, for names that are no strings of JSON.
template <typename Key, typename Value>
void readPairs(const JsonValue& value, std::map<Key, Value>& out, const Path& path,
               Errors& errors) {
    size_t i = 0;
    for (const JsonValue& pair : value) {
        const Path pairPath{&path, {}, i++};
        if (!pair.isArray() || pair.size() != 2) {
            errors.add(pairPath, "must be an array of a name and a value");
            continue;
        }
        JsonValue::Iterator half = pair.begin();
        Key key{};
        readValue(*half, key, Path{&pairPath, {}, 0}, errors);
        ++half;
        readEntry(std::move(key), *half, out, pairPath, errors);
    }
}

template <typename Key, typename Value>
void readValue(const JsonValue& value, std::map<Key, Value>& out, const Path& path,
               Errors& errors) {
    if (value.isArray()) {
        readPairs(value, out, path, errors);
        return;
    }
    if (!value.isObject()) {
        errors.add(path, "must be an object");
        return;
    }
    for (const JsonValue& member : value) {
        const Path memberPath{&path, member.name()};
        Key key{};
        if (readKey(member.name(), key, memberPath, errors)) {
            readEntry(std::move(key), member, out, memberPath, errors);
        }
    }
}

// Reads an object member by member; what it lacks stays as it is.
class Members {
  public:
    Members(const JsonValue& value, const Path& path, Errors& errors)
        : mValue(value), mPath(path), mErrors(errors) {
        if (!mValue.isObject()) {
            mErrors.add(mPath, "must be an object");
        }
    }

    template <typename Member>
    Members& read(std::string_view name, Member& out) {
        mKnown.push_back(name);
        const JsonValue* member = mValue.isObject() ? mValue.find(name) : nullptr;
        if (member != nullptr) {
            readValue(*member, out, Path{&mPath, name}, mErrors);
        }
        return *this;
    }

    // Refuses what was not read. `owner` is the object's name in the message.
    void finish(std::string_view owner) {
        if (!mValue.isObject()) {
            return;
        }
        for (const JsonValue& member : mValue) {
            if (std::find(mKnown.begin(), mKnown.end(), member.name()) == mKnown.end()) {
                mErrors.addUnknown(Path{&mPath, member.name()}, owner, mKnown);
            }
        }
    }

  private:
    const JsonValue& mValue;
    const Path& mPath;
    Errors& mErrors;
    std::vector<std::string_view> mKnown;
};

}  // namespace replay
